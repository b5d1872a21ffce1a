// The layout of shuffles and coefficients of the byte row scaler along a row.
#pragma once

#include <cstdint>

#include "kernels/byte_row_plan.h"
#include "kernels/scale_job.h"
#include "plan/phase_position.h"

namespace vidproc {

/// Positions along a row of pixels, by sample grid.
struct RowRules {
  PositionRule luma;
  PositionRule chroma;
  bool operator==(const RowRules&) const = default;
};

/// Whether the bank can be laid out for these positions. This is a matter of reach, not of exactness: a shuffle finds
/// the samples of 8 results in a window of 16, which takes outputs at most two samples apart; and a coefficient of 128,
/// which a signed byte cannot hold, is halved between the two places of a single pair of taps.
bool CanLayOutByteRows(const TapBank& bank, const RowRules& rules);

/// Bytes that LayOutByteRows writes to for rows of outWidth pixels.
std::uint64_t ByteRowPlanBytes(std::uint64_t outWidth);

/// Lays out the patterns of the horizontal bank in `memory`, of ByteRowPlanBytes.
void LayOutByteRows(const TapBank& bank, const RowRules& rules, std::int32_t outWidth, const ByteRowShape& shape,
                    std::uint8_t* memory, ByteRowPlan& plan);

}  // namespace vidproc
