// The processor's own working memory: the strip's memory, positions and plans, made at set-up and kept for the life of
// the object. It grows with larger frames; the public buffers never do.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

#include "kernels/noise_field.h"
#include "kernels/scale_job.h"
#include "plan/scale_plan.h"

namespace vidproc {

/// Sides of the source and of the destination, in pixels, all below kMaxFrameSide.
struct FrameSizes {
  std::uint64_t inWidth, inHeight, outWidth, outHeight;
  bool operator==(const FrameSizes&) const = default;
};

struct Workspace {
  /// Makes room for frames of these sizes. @throws std::bad_alloc, leaving the workspace as it was.
  void Reserve(const FrameSizes& sizes);

  StripMemory strip{};
  ScalePlan::Memory planMemory{};
  std::uint8_t* narrowRows = nullptr;           ///< inHeight rows of kMinRowBytes, for rows that are shorter
  std::uint8_t* narrowPreviousInput = nullptr;  ///< outHeight rows of the same pitch
  std::uint8_t* deblockRows = nullptr;          ///< the three rows above a strip
  std::int32_t* deblockSources = nullptr;       ///< one per column
  ScalePlan plan;
  NoiseField noise{};
  const SourcePlanes* planes = nullptr;  ///< what the next plain scaling reads in place of the source frame
  bool frameProduced = false;            ///< a kernel has written a frame since this was last cleared

 private:
  std::unique_ptr<std::uint8_t[]> memory;
  std::uint64_t memoryBytes = 0;
  FrameSizes reservedFor{};
};

}  // namespace vidproc
