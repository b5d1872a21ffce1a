// The byte form of the plain scaler, as plain data: where a set of banks provably keeps every intermediate value inside
// a byte, a row is filtered without transposes. Each vector of outputs gathers its samples by byte shuffles from
// windows of the row; the shuffles and coefficients repeat along the row and are laid out here, at set-up.
#pragma once

#include <cstdint>

#include "passes/phase_position.h"
#include "passes/scale_job.h"
#include "simd/kernel_table.h"

namespace vidproc {

/// Outputs of one component grid (luma samples, or Cb Cr pairs), in vectors of vectorBytes / 2 results. A vector's
/// pattern is one vector of shuffle indices and one of signed byte coefficients for each pair of taps.
struct RowGrid {
  const std::uint8_t* patterns;
  const std::int32_t* windows;  ///< per vector: byte offset into the row of each of its windows
  std::int32_t vectors;         ///< of one period
  std::int32_t advance;         ///< bytes of the row from one period to the next; 0 where a row has no second one
};

struct RowPlan {
  std::int32_t tapPairs;  ///< 1 to 4
  RowGrid luma;
  RowGrid chroma;
};

/// Whether the row form gives the same bytes as the general one for the used phases of these banks and for this
/// horizontal ratio.
bool RowFormIsExact(const TapBank& vertical, const TapBank& horizontal, std::int32_t precisionBits, const Ratio& ratio);

/// Whether the adaptive scalers' byte form is exact for the used phases of these banks of 7 bits.
bool AdaptiveBytesAreExact(const TapBank& vertical, const TapBank& horizontal);

/// Bytes that LayOutRowPlan writes to for rows of outWidth pixels.
std::uint64_t RowPlanBytes(std::uint64_t outWidth);

/// Lays out the patterns of the horizontal bank in `memory`, of RowPlanBytes.
void LayOutRowPlan(const TapBank& bank, const Ratio& ratio, std::int32_t outWidth, const RowFormShape& shape,
                   std::uint8_t* memory, RowPlan& plan);

}  // namespace vidproc
