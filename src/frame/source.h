// Where the samples of a frame come from.
#pragma once

#include <cstddef>
#include <cstdint>

#include "frame/frame_memory.h"
#include "frame/planes_420.h"
#include "frame/workspace.h"
#include "vidproc/video_processor.h"

namespace vidproc {

/// The processor's source frame; or planes, which are staged there unless the work can read them as they are.
struct Source {
  explicit Source(const VideoProcessor& processor, const Frame420* planes = nullptr)
      : frame(processor.srcFrame), stride(static_cast<std::ptrdiff_t>(processor.inStride)), planes(planes) {}

  /// Makes the rows of the source frame from the planes, where there are any.
  void StagePlanes() const {
    if (planes != nullptr) StageFrame(*planes, frame);
  }
  Rows FrameRows() const { return {frame, stride}; }

  std::uint8_t* frame;
  std::ptrdiff_t stride;
  const Frame420* planes;
};

/// The scratch buffer that `written`, of `bytes`, lies outside of.
std::uint8_t* UnusedScratch(const VideoProcessor& processor, const BufferCapacities& held, const std::uint8_t* written,
                            std::uint64_t bytes);

/// The source rows as they are, or a packed copy of them where writing the destination would change them.
Rows CopyIfOverlapped(const VideoProcessor& processor, const BufferCapacities& held, const Rows& source);

}  // namespace vidproc
