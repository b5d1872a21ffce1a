// The buffers that a processor owns: their sizes, and their memory, zero-filled when it is taken. Pages stay untouched
// until a frame needs them, since buffers are sized for the largest stride and most frames fill a part of them.
#pragma once

#include "frame/workspace.h"
#include "vidproc/video_processor.h"

namespace vidproc {

/// Takes the scratch buffers and the previous frame where they are missing. kept: buffers that exist keep their size,
/// however large the frames of a later set-up.
/// @throws std::bad_alloc, also where a size does not fit a signed 32-bit number.
void TakeWorkingBuffers(VideoProcessor& processor, BufferCapacities& held);

/// The same for the two buffers of motion smoothing.
void TakeSmoothingBuffers(VideoProcessor& processor, BufferCapacities& held);
void ReleaseSmoothingBuffers(VideoProcessor& processor) noexcept;

void ReleaseAllBuffers(VideoProcessor& processor) noexcept;

}  // namespace vidproc
