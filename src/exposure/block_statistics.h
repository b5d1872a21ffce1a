// Sums over the 256 luma samples of a 16 x 16 block in a frame (c) and in the reference (r).
#pragma once

#include <cstdint>

namespace vidproc {

constexpr int kExposureBlockSize = 16;

struct BlockStatistics {
  std::int32_t frameSum;          // of c
  std::int32_t referenceSum;      // of r
  std::int32_t frameSquares;      // of c * c
  std::int32_t referenceSquares;  // of r * r
  std::int32_t products;          // of c * r
};

}  // namespace vidproc
