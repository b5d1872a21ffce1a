// The processor's own working memory: the strip's memory, positions and plans, made at set-up and kept for the life of
// the object. It grows with larger frames; the public buffers never do.
#pragma once

#include <cstddef>
#include <cstdint>

#include "frame/zeroed_memory.h"
#include "kernels/scale_job.h"
#include "plan/scale_plan.h"

class VideoProcessor;

namespace vidproc {

/// Sides of the source and of the destination, in pixels, all below kMaxFrameSide.
struct FrameSizes {
  std::uint64_t inWidth, inHeight, outWidth, outHeight;
  bool operator==(const FrameSizes&) const = default;
};

/// What the working buffers of an object hold, in bytes: scratchA and scratchB each, the others by their names.
struct BufferCapacities {
  std::uint64_t scratch = 0;
  std::uint64_t previousFrame = 0;
  std::uint64_t smoothingLarge = 0;
  std::uint64_t smoothingSmall = 0;
};

/// The private part of a processor.
struct Workspace {
  /// Makes room for frames of these sizes. @throws std::bad_alloc, leaving the workspace as it was.
  void Reserve(const FrameSizes& sizes);
  /// The same; false where memory is out.
  bool TryToReserve(const FrameSizes& sizes);

  BufferCapacities held;
  StripMemory strip{};
  ScalePlan::Memory planMemory{};
  std::uint8_t* narrowRows = nullptr;           ///< inHeight rows of kMinRowBytes, for rows that are shorter
  std::uint8_t* narrowPreviousInput = nullptr;  ///< outHeight rows of the same pitch
  std::uint8_t* deblockRows = nullptr;          ///< the three rows above a strip
  std::int32_t* deblockSources = nullptr;       ///< one per column
  ScalePlan plan;

 private:
  ZeroedMemory<std::uint8_t> memory;
  std::uint64_t memoryBytes = 0;
  FrameSizes reservedFor{};
};

FrameSizes FrameSizesOf(const VideoProcessor& processor);

/// Nothing before the first set-up.
inline BufferCapacities HeldBy(const Workspace* workspace) {
  return workspace == nullptr ? BufferCapacities{} : workspace->held;
}

}  // namespace vidproc
