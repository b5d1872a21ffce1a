// Frames of noise for the library and for GStreamer's elements, the same bytes in both.
#pragma once

#include <gst/check/gstharness.h>
#include <gst/video/video.h>

#include <cstdint>
#include <string>
#include <vector>
#include <vidproc/vidproc.hpp>

namespace vidproc_gstreamer_tests {

using Bytes = std::vector<std::uint8_t>;

/// Where a buffer's rows lie: as its caps imply, or as its video metadata says.
enum class Layout { kTight, kPadded, kBottomUp };

struct Format {
  const char* caps;
  vidproc_format frame;
  int chromaOrder[3];  ///< the buffer's planes in the library's order
};
inline constexpr Format kFormats[] = {
    {"I420", VIDPROC_FORMAT_I420, {0, 1, 2}}, {"YV12", VIDPROC_FORMAT_I420, {0, 2, 1}},
    {"NV12", VIDPROC_FORMAT_NV12, {0, 1}},    {"YUY2", VIDPROC_FORMAT_YUYV, {0}},
    {"UYVY", VIDPROC_FORMAT_UYVY, {0}},       {"Y42B", VIDPROC_FORMAT_I422, {0, 1, 2}}};

/// What a stream's frames are like; its chroma is named to be beside the left pixel of a pair.
struct Shape {
  Format format;
  int width, height;

  vidproc_frame_info Info() const { return {format.frame, width, height, VIDPROC_SITING_LEFT}; }
  std::string Caps(const char* more = "") const;
};

/// The same noise for the same number.
Bytes Noise(const Shape& shape, unsigned number);

/// A buffer with these bytes, and padding that nobody may take for a part of the picture; number / 30 s in the stream.
GstBuffer* MakeBuffer(const Shape& shape, const Bytes& bytes, Layout layout, unsigned number);

/// The bytes of a buffer without its padding. Consumes it; empty for null.
Bytes TakeBytes(const Shape& shape, GstBuffer* buffer);

}  // namespace vidproc_gstreamer_tests
