// Checks of the frames of one call against the configured formats and sizes, in constant time.
#pragma once

#include "api/error_text.h"
#include "api/frame_layout.h"
#include "vidproc/vidproc.h"

namespace vidproc::api {

/// A frame of either direction, for checks.
struct FrameView {
  const char* name;
  vidproc_format format;
  std::int32_t width;
  std::int32_t height;
  const std::uint8_t* plane[kMaxPlanes];
  std::ptrdiff_t stride[kMaxPlanes];
  std::size_t bytes[kMaxPlanes];
};

template <typename Frame>
FrameView ViewOf(const char* name, const Frame& f) {
  return {name,
          f.format,
          f.width,
          f.height,
          {f.plane[0], f.plane[1], f.plane[2]},
          {f.stride[0], f.stride[1], f.stride[2]},
          {f.bytes[0], f.bytes[1], f.bytes[2]}};
}

/// Whether the frame is of the configured format and size, and every byte of it lies in its planes.
vidproc_status CheckFrame(const FrameView& frame, const vidproc_frame_info& configured, ErrorText& error) noexcept;

/// Whether two checked frames are the very same one or share no byte, and the output's planes share none.
vidproc_status CheckOverlap(const FrameView& input, const vidproc_frame_info& inputInfo, const FrameView& output,
                            const vidproc_frame_info& outputInfo, ErrorText& error) noexcept;

}  // namespace vidproc::api
