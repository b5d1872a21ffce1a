// Sums over the 256 luma samples of a 16 x 16 block in a frame (c) and in the reference (r).
#pragma once

#include <cstdint>

namespace vidproc {

constexpr int kExposureBlockSize = 16;

struct BlockStatistics {
  std::uint32_t sums;              // of c in the low half, of r in the high half
  std::uint32_t frameSquares;      // of c * c
  std::uint32_t referenceSquares;  // of r * r
  std::uint32_t products;          // of c * r
};

}  // namespace vidproc
