#include "video_frame.h"

#include <algorithm>

namespace vidproc::gstreamer {
namespace {

constexpr int kMaxSide = 16384;

constexpr struct {
  GstVideoFormat caps;
  vidproc_format frame;
} kFormats[] = {{GST_VIDEO_FORMAT_I420, VIDPROC_FORMAT_I420}, {GST_VIDEO_FORMAT_YV12, VIDPROC_FORMAT_I420},
                {GST_VIDEO_FORMAT_NV12, VIDPROC_FORMAT_NV12}, {GST_VIDEO_FORMAT_YUY2, VIDPROC_FORMAT_YUYV},
                {GST_VIDEO_FORMAT_UYVY, VIDPROC_FORMAT_UYVY}, {GST_VIDEO_FORMAT_Y42B, VIDPROC_FORMAT_I422}};

vidproc_format FormatOf(GstVideoFormat format) {
  const auto* const found =
      std::find_if(std::begin(kFormats), std::end(kFormats), [=](const auto& one) { return one.caps == format; });
  return found == std::end(kFormats) ? vidproc_format{0} : found->frame;
}

/// What a plane may reach into: its own part of a buffer that has video metadata, else the whole buffer.
const GstMapInfo& MappingOf(const GstVideoFrame& frame, guint plane) {
  return frame.map[frame.meta != nullptr ? plane : 0];
}

/// From the lowest byte that may belong to a plane to the highest.
std::size_t PlaneBytes(const GstMapInfo& mapping, const std::uint8_t* top, std::ptrdiff_t stride) {
  const auto before = top - mapping.data;
  const auto after = static_cast<std::ptrdiff_t>(mapping.size) - before;
  if (before < 0 || after < 0) return 0;
  return static_cast<std::size_t>(stride < 0 ? before + std::min(-stride, after) : after);
}

/// vidproc_input or vidproc_output, which differ in constness only. The library's planes are in the order of the
/// components, which YV12's are not.
template <typename View>
View ViewOf(const GstVideoFrame& frame) {
  View view = {};
  view.format = FormatOf(GST_VIDEO_FRAME_FORMAT(&frame));
  view.width = GST_VIDEO_FRAME_WIDTH(&frame);
  view.height = GST_VIDEO_FRAME_HEIGHT(&frame);
  for (guint p = 0; p < GST_VIDEO_FRAME_N_PLANES(&frame); ++p) {
    const guint plane = GST_VIDEO_FRAME_COMP_PLANE(&frame, p);
    view.plane[p] = static_cast<std::uint8_t*>(frame.data[plane]);
    view.stride[p] = frame.info.stride[plane];
    view.bytes[p] = PlaneBytes(MappingOf(frame, plane), view.plane[p], view.stride[p]);
  }
  return view;
}

}  // namespace

GstCaps* FrameCaps(int smallestWidth, int smallestHeight) {
  GValue formats = G_VALUE_INIT, format = G_VALUE_INIT;
  g_value_init(&formats, GST_TYPE_LIST);
  g_value_init(&format, G_TYPE_STRING);
  for (const auto& one : kFormats) {
    g_value_set_static_string(&format, gst_video_format_to_string(one.caps));
    gst_value_list_append_value(&formats, &format);
  }
  GstCaps* const caps = gst_caps_new_simple("video/x-raw", "width", GST_TYPE_INT_RANGE, smallestWidth, kMaxSide,
                                            "height", GST_TYPE_INT_RANGE, smallestHeight, kMaxSide, "framerate",
                                            GST_TYPE_FRACTION_RANGE, 0, 1, G_MAXINT, 1, nullptr);
  gst_caps_set_value(caps, "format", &formats);
  g_value_unset(&format);
  g_value_unset(&formats);
  return caps;
}

FrameInfo InfoOf(const GstVideoInfo& info) {
  constexpr auto kPlaced = GST_VIDEO_CHROMA_SITE_NONE | GST_VIDEO_CHROMA_SITE_V_COSITED;
  const bool isBesideLuma = (info.chroma_site & GST_VIDEO_CHROMA_SITE_H_COSITED) != 0;
  const bool isCentred = !isBesideLuma && (info.chroma_site & kPlaced) != 0;
  return {FormatOf(GST_VIDEO_INFO_FORMAT(&info)), GST_VIDEO_INFO_WIDTH(&info), GST_VIDEO_INFO_HEIGHT(&info),
          isCentred ? VIDPROC_SITING_CENTRE : VIDPROC_SITING_LEFT};
}

Input InputOf(const GstVideoFrame& frame) { return ViewOf<Input>(frame); }
Output OutputOf(const GstVideoFrame& frame) { return ViewOf<Output>(frame); }

}  // namespace vidproc::gstreamer
