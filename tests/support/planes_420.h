// 4:2:0 frames in guarded memory, and what the plain scaler makes of them in the reference.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "reference/nv12.h"
#include "support/guarded_memory.h"
#include "support/kernel_harness.h"

namespace testing_support {

struct PlaneSize {
  PlaneSize(std::size_t rowBytes, std::size_t rows, Random& random)
      : stride(rowBytes + static_cast<std::size_t>(random.OneIn(2) ? 0 : random.Between(1, 40))),
        bytes((rows - 1) * stride + rowBytes) {}
  unsigned Stride() const { return static_cast<unsigned>(stride); }

  std::size_t stride;
  std::size_t bytes;
};

/// A luma and a chroma plane. Odd widths have a whole last pair of chroma.
struct PlanePair {
  PlanePair(std::size_t width, std::size_t height, Flush flush, Random& random)
      : lumaSize(width, height, random),
        chromaSize((width + 1) / 2 * 2, (height + 1) / 2, random),
        luma(lumaSize.bytes, flush, random),
        chroma(chromaSize.bytes, flush, random) {}

  void Load() {
    luma.Load();
    chroma.Load();
  }
  std::string FirstDifference() const {
    const std::string difference = luma.FirstDifference(0, lumaSize.stride);
    return difference.empty() ? chroma.FirstDifference(0, chromaSize.stride) : difference;
  }

  PlaneSize lumaSize, chromaSize;
  GuardedMemory luma, chroma;
};

/// Runs the 4:2:0 function on the live planes with the sizes that the handle was set up with.
void Execute420(void* handle, PlanePair& in, PlanePair& out);

/// Staging, plain scaler and unstaging with the settings as the fields stand. @return the packed result.
std::vector<std::uint8_t> RunReference420(const VideoProcessor& fields, PlanePair& in, PlanePair& out);

}  // namespace testing_support
