// The byte form of the plain scaler, as plain data: where a set of banks provably keeps every intermediate value inside
// a byte, a row is filtered without transposes. Each vector of outputs gathers its samples by byte shuffles from
// windows of the row; the shuffles and coefficients repeat along the row and are laid out here, at set-up.
#pragma once

#include <cstdint>

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

}  // namespace vidproc
