#include "frames.h"

#include <gst/video/gstvideometa.h>

#include <cstring>
#include <random>

namespace vidproc_gstreamer_tests {
namespace {

constexpr std::size_t kPadding = 24;

GstVideoInfo VideoInfo(const Shape& shape) {
  GstVideoInfo info;
  gst_video_info_set_format(&info, gst_video_format_from_string(shape.format.caps), static_cast<guint>(shape.width),
                            static_cast<guint>(shape.height));
  return info;
}

std::size_t Rows(const vidproc_input& frame, int plane) {
  return frame.bytes[plane] / static_cast<std::size_t>(frame.stride[plane]);
}

/// Calls visit(row of the buffer, row of the bytes, bytes of a row).
template <typename Visit>
void VisitRows(const Shape& shape, GstBuffer* buffer, const Bytes& bytes, GstMapFlags flags, const Visit& visit) {
  GstVideoInfo info = VideoInfo(shape);
  GstVideoFrame frame;
  g_assert_true(gst_video_frame_map(&frame, &info, buffer, flags));
  const vidproc_input tight = vidproc::InputOver(shape.Info(), bytes);
  for (int p = 0; p < 3 && tight.plane[p] != nullptr; ++p) {
    const int plane = shape.format.chromaOrder[p];
    for (std::size_t y = 0; y < Rows(tight, p); ++y) {
      const auto row = static_cast<std::ptrdiff_t>(y);
      visit(static_cast<std::uint8_t*>(frame.data[plane]) + row * frame.info.stride[plane],
            const_cast<std::uint8_t*>(tight.plane[p]) + row * tight.stride[p],
            static_cast<std::size_t>(tight.stride[p]));
    }
  }
  gst_video_frame_unmap(&frame);
}

/// Memory of exactly the planes and their padding, and where they are in it.
GstBuffer* AllocateWithMeta(const Shape& shape, bool isBottomUp) {
  const Bytes none(vidproc::FrameBytes(shape.Info()));
  const vidproc_input tight = vidproc::InputOver(shape.Info(), none);
  gsize offsets[GST_VIDEO_MAX_PLANES] = {}, size = 0;
  gint strides[GST_VIDEO_MAX_PLANES] = {};
  guint planes = 0;
  for (int p = 0; p < 3 && tight.plane[p] != nullptr; ++p, ++planes) {
    const int plane = shape.format.chromaOrder[p];
    const std::size_t stride = static_cast<std::size_t>(tight.stride[p]) + kPadding, last = Rows(tight, p) - 1;
    offsets[plane] = size + (isBottomUp ? last * stride : 0);
    strides[plane] = isBottomUp ? -static_cast<gint>(stride) : static_cast<gint>(stride);
    size += last * stride + static_cast<std::size_t>(tight.stride[p]);
  }
  GstBuffer* const buffer = gst_buffer_new_allocate(nullptr, size, nullptr);
  gst_buffer_add_video_meta_full(buffer, GST_VIDEO_FRAME_FLAG_NONE, gst_video_format_from_string(shape.format.caps),
                                 static_cast<guint>(shape.width), static_cast<guint>(shape.height), planes, offsets,
                                 strides);
  return buffer;
}

}  // namespace

std::string Shape::Caps(const char* more) const {
  return std::string("video/x-raw,format=") + format.caps + ",width=" + std::to_string(width) +
         ",height=" + std::to_string(height) + ",framerate=30/1,colorimetry=bt709,chroma-site=mpeg2" + more;
}

Bytes Noise(const Shape& shape, unsigned number) {
  std::minstd_rand random(number + 1);
  Bytes bytes(vidproc::FrameBytes(shape.Info()));
  for (std::uint8_t& byte : bytes) byte = static_cast<std::uint8_t>(60 + random() % 40);
  return bytes;
}

GstBuffer* MakeBuffer(const Shape& shape, const Bytes& bytes, Layout layout, unsigned number) {
  GstBuffer* const buffer = layout == Layout::kTight ? gst_buffer_new_allocate(nullptr, VideoInfo(shape).size, nullptr)
                                                     : AllocateWithMeta(shape, layout == Layout::kBottomUp);
  gst_buffer_memset(buffer, 0, 255, gst_buffer_get_size(buffer));
  VisitRows(shape, buffer, bytes, GST_MAP_WRITE,
            [](auto* row, const auto* source, std::size_t count) { std::memcpy(row, source, count); });
  GST_BUFFER_PTS(buffer) = gst_util_uint64_scale_int(GST_SECOND, static_cast<gint>(number), 30);
  GST_BUFFER_DURATION(buffer) = GST_SECOND / 30;
  return buffer;
}

Bytes TakeBytes(const Shape& shape, GstBuffer* buffer) {
  if (buffer == nullptr) return {};
  Bytes bytes(vidproc::FrameBytes(shape.Info()));
  VisitRows(shape, buffer, bytes, GST_MAP_READ,
            [](const auto* row, auto* target, std::size_t count) { std::memcpy(target, row, count); });
  gst_buffer_unref(buffer);
  return bytes;
}

}  // namespace vidproc_gstreamer_tests
