// The byte form of the plain scaler, as plain data: where a set of banks provably keeps every intermediate value inside
// a byte, a row is filtered without transposes. Each vector of outputs gathers its samples by byte shuffles from
// windows of the row; the shuffles and coefficients repeat along the row and are laid out here, at set-up.
#pragma once

#include <cstdint>

#include "passes/scale_job.h"
#include "simd/kernel_table.h"

namespace vidproc {

/// Outputs of one component grid (luma samples, or Cb Cr pairs), in vectors of vectorBytes / 2 results. A vector's
/// pattern is one vector of shuffle indices and one of signed byte coefficients for each pair of taps.
struct RowGrid {
  const std::uint8_t* patterns;
  const std::int32_t* windows;  ///< per vector: byte offset into the row of each of its windows
  std::int32_t vectors;         ///< of one period
  std::int32_t advance;         ///< bytes of the row from one period to the next
};

struct RowPlan {
  std::int32_t tapPairs;  ///< 1 to 4
  RowGrid luma;
  RowGrid chroma;
};

/// Whether the row form gives the same bytes as the general one for these banks, in the phases that are used, and for
/// this ratio.
bool RowFormIsExact(const TapBank& vertical, std::uint32_t verticalPhases, const TapBank& horizontal,
                    std::uint32_t horizontalPhases, std::int32_t precisionBits, std::int32_t up, std::int32_t down);

/// Whether the adaptive scalers' byte form is exact for these banks of 7 bits.
bool AdaptiveBytesAreExact(const TapBank& vertical, std::uint32_t verticalPhases, const TapBank& horizontal,
                           std::uint32_t horizontalPhases);

/// Bytes that LayOutRowPlan writes to for rows of outWidth pixels.
std::uint64_t RowPlanBytes(std::uint64_t outWidth);

/// Lays out the patterns in `memory`, of RowPlanBytes. up and down are the reduced horizontal ratio.
void LayOutRowPlan(const TapBank& bank, std::uint32_t usedPhases, std::int32_t outWidth, std::int32_t up,
                   std::int32_t down, const RowFormShape& shape, std::uint8_t* memory, RowPlan& plan);

}  // namespace vidproc
