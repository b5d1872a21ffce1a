// Rows of 16 x 16 luma blocks in a 2vuy frame, and their comparison with those of a reference.
#pragma once

#include <cstddef>
#include <cstdint>

namespace vidproc {

constexpr int kExposureBlockSize = 16;
constexpr int kExposureBlockSamples = kExposureBlockSize * kExposureBlockSize;

/// What a reference block brings to every comparison.
struct ReferenceBlock {
  std::int32_t sum;
  std::int32_t variance;  ///< 256 times the variance
  std::int32_t firstSample;
};

/// `count` blocks side by side in a frame, and their reference: the samples block after block.
struct BlockRow {
  const std::uint8_t* frame;
  std::ptrdiff_t pitch;  ///< bytes from row to row of the frame
  int count;
  std::uint8_t* referenceLuma;
  ReferenceBlock* references;
};

/// Where the comparison of each block goes; 65536 is 1.
struct BlockComparisons {
  std::int32_t* correlation;
  std::uint32_t* meanRatio;
  std::int32_t* isFlat;
};

struct BlockTotals {
  std::int32_t matching = 0;
  std::uint32_t firstSamples = 0;  ///< the frame's where the block matches, elsewhere the reference's
};

}  // namespace vidproc
