// Whether the byte forms are exact for a set of banks, and the layout of the byte form of the plain scaler.
#pragma once

#include <cstdint>

#include "kernels/byte_row_plan.h"
#include "kernels/kernel_table.h"
#include "kernels/scale_job.h"
#include "plan/phase_position.h"

namespace vidproc {

/// Whether the byte row scaler gives the same bytes as the general one for the used phases of these banks and for this
/// horizontal ratio.
bool ByteRowScalerIsExact(const TapBank& vertical, const TapBank& horizontal, std::int32_t precisionBits,
                          const Ratio& ratio);

/// Whether the adaptive scalers' byte form is exact for the used phases of these banks of 7 bits.
bool AdaptiveBytesAreExact(const TapBank& vertical, const TapBank& horizontal);

/// Bytes that LayOutByteRowPlan writes to for rows of outWidth pixels.
std::uint64_t ByteRowPlanBytes(std::uint64_t outWidth);

/// Lays out the patterns of the horizontal bank in `memory`, of ByteRowPlanBytes.
void LayOutByteRowPlan(const TapBank& bank, const Ratio& ratio, std::int32_t outWidth, const ByteRowShape& shape,
                       std::uint8_t* memory, ByteRowPlan& plan);

}  // namespace vidproc
