// GStreamer's GstVideoConverter, which its videoscale element runs on.
#include <gst/video/video.h>

#include <cstdlib>
#include <memory>

#include "contest.h"

namespace bench {
namespace {

GstVideoInfo Describe(Format format, Size size) {
  GstVideoInfo info;
  constexpr GstVideoFormat kFormats[] = {GST_VIDEO_FORMAT_UYVY, GST_VIDEO_FORMAT_NV12, GST_VIDEO_FORMAT_I420};
  gst_video_info_set_format(&info, kFormats[static_cast<int>(format)], static_cast<guint>(size.width),
                            static_cast<guint>(size.height));
  return info;
}

/// The converter reads nothing of a frame but its description and planes.
GstVideoFrame Wrap(const GstVideoInfo& info, std::uint8_t* memory) {
  GstVideoFrame frame{};
  frame.info = info;
  for (guint p = 0; p < GST_VIDEO_INFO_N_PLANES(&info); ++p) {
    frame.data[p] = memory + GST_VIDEO_INFO_PLANE_OFFSET(&info, p);
  }
  return frame;
}

void Enter(const Contest& contest, const char* contestant, GstVideoResamplerMethod method) {
  Enter(contest, contestant, [=]() -> Run {
    setenv("GST_REGISTRY_DISABLE", "yes", 0);  // the converter needs no plugins
    gst_init(nullptr, nullptr);
    const GstVideoInfo in = Describe(contest.format, contest.in), out = Describe(contest.format, contest.out);
    GstStructure* options =
        gst_structure_new("options", GST_VIDEO_CONVERTER_OPT_RESAMPLER_METHOD, GST_TYPE_VIDEO_RESAMPLER_METHOD, method,
                          GST_VIDEO_CONVERTER_OPT_DITHER_METHOD, GST_TYPE_VIDEO_DITHER_METHOD, GST_VIDEO_DITHER_NONE,
                          GST_VIDEO_CONVERTER_OPT_THREADS, G_TYPE_UINT, 1u, nullptr);
    const std::shared_ptr<GstVideoConverter> converter(gst_video_converter_new(&in, &out, options),
                                                       gst_video_converter_free);
    if (converter == nullptr) return {};
    return [=](const std::uint8_t* source, std::uint8_t* destination) {
      const GstVideoFrame from = Wrap(in, const_cast<std::uint8_t*>(source));
      GstVideoFrame to = Wrap(out, destination);
      gst_video_converter_frame(converter.get(), &from, &to);
    };
  });
}

const bool kEntered = [] {
  for (const int soften : {10, 0}) {
    for (const Contest& contest : ScaleContests(soften)) {
      Enter(contest, "gstreamer-cubic", GST_VIDEO_RESAMPLER_METHOD_CUBIC);
    }
  }
  for (const Contest& contest : PostScaleContests()) {
    Enter(contest, "gstreamer-lanczos", GST_VIDEO_RESAMPLER_METHOD_LANCZOS);
  }
  Enter(Nv12Contest(), "gstreamer-cubic", GST_VIDEO_RESAMPLER_METHOD_CUBIC);
  for (const Contest& contest : AutomaticContests(8)) {
    Enter(contest, "gstreamer-cubic", GST_VIDEO_RESAMPLER_METHOD_CUBIC);
  }
  return true;
}();

}  // namespace
}  // namespace bench
