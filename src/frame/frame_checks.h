// What may be done with the frames and buffers of a processor as its fields stand, which an embedding program may have
// written by hand. Nothing here changes anything.
#pragma once

#include <cstdint>
#include <optional>

#include "frame/scaler_traits.h"
#include "frame/workspace.h"
#include "vidproc/video_processor.h"

namespace vidproc {

/// Bytes from `start` to the end of the working buffer that it lies in, if it lies in one.
std::optional<std::uint64_t> RoomInWorkingBuffer(const VideoProcessor& processor, const BufferCapacities& held,
                                                 const void* start);

/// Whether source and destination exist, have rows of their own, and end before a working buffer that they lie in does.
bool FramesAreUsable(const VideoProcessor& processor, const BufferCapacities& held);

/// Whether the buffers hold the whole-frame layouts that set-up sizes them for, whatever the strips really need.
bool FitsScaler(const VideoProcessor& processor, const BufferCapacities& held, const ScalerTraits& traits);

/// Whether the scaler may run: usable frames that fit the buffers, and ratios that stay inside the source.
bool CanScale(const VideoProcessor& processor, const BufferCapacities& held, const ScalerTraits& traits);

/// Deblocking is for frames that keep their size, in packed rows.
bool SuitsDeblocking(const VideoProcessor& processor);

/// Whether the source frame, which suits deblocking, may be deblocked in place.
bool CanDeblock(const VideoProcessor& processor, const BufferCapacities& held);

/// Whether the same-size temporal filter may run. It reads the source as one packed block of the output's size.
bool CanFilterTemporally(const VideoProcessor& processor, const BufferCapacities& held);

/// Whether the temporal filter works on a copy of its source, since writing would change it too early.
bool TemporalSourceIsInTheWay(const VideoProcessor& processor);

}  // namespace vidproc
