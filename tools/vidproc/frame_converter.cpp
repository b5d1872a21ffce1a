// Conversions by libavfilter; see frame_converter.h.
#include "frame_converter.h"

extern "C" {
#include <libavfilter/buffersink.h>
#include <libavfilter/buffersrc.h>
#include <libavutil/pixdesc.h>
}

#include <utility>

#include "errors.h"

namespace vidproc::tool {
namespace {

void Check(int result) {
  if (result < 0) throw ToolError(kFailure, "conversion of frames failed: " + FfmpegError(result));
}

std::string MatrixName(AVColorSpace matrix) {
  switch (matrix) {
    case AVCOL_SPC_BT709:
      return "bt709";
    case AVCOL_SPC_FCC:
      return "fcc";
    case AVCOL_SPC_SMPTE240M:
      return "smpte240m";
    case AVCOL_SPC_BT2020_NCL:
    case AVCOL_SPC_BT2020_CL:
      return "bt2020";
    default:
      return "bt601";
  }
}

std::string RangeName(AVColorRange range) { return range == AVCOL_RANGE_JPEG ? "full" : "limited"; }

/// Where libswscale takes chroma samples to lie: 0 beside the left luma sample, -513 midway between two.
std::string Place(AVChromaLocation location) { return location == AVCHROMA_LOC_CENTER ? "-513" : "0"; }

}  // namespace

bool IsRgb(AVPixelFormat format) {
  const AVPixFmtDescriptor* description = av_pix_fmt_desc_get(format);
  return description != nullptr && (description->flags & AV_PIX_FMT_FLAG_RGB) != 0;
}

void SetColour(AVFrame& frame, const ColourTags& colour) {
  frame.color_primaries = colour.primaries;
  frame.color_trc = colour.transfer;
  frame.colorspace = colour.matrix;
  frame.chroma_location = colour.chromaLocation;
  frame.color_range = colour.range;
}

ColourTags ColourOf(const AVFrame& frame) {
  return {frame.color_primaries, frame.color_trc, frame.colorspace, frame.chroma_location, frame.color_range};
}

FrameConverter::FrameConverter(std::string steps, AVPixelFormat format, const ColourTags& target)
    : steps(std::move(steps)), format(format), target(target) {}

std::string FrameConverter::ScaleStep(const AVFrame& frame) const {
  const auto from = static_cast<AVPixelFormat>(frame.format);
  std::string step = "scale=flags=bicubic+accurate_rnd+full_chroma_int+full_chroma_inp+bitexact";
  step += ":in_h_chr_pos=" + Place(frame.chroma_location) + ":out_h_chr_pos=" + Place(target.chromaLocation);
  if (!IsRgb(from)) {
    step += ":in_color_matrix=" + MatrixName(frame.colorspace) + ":in_range=" + RangeName(frame.color_range);
  }
  if (!IsRgb(format))
    step += ":out_color_matrix=" + MatrixName(target.matrix) + ":out_range=" + RangeName(target.range);
  return step;
}

void FrameConverter::SetUp(const AVFrame& frame) {
  graph.reset(OrBadAlloc(avfilter_graph_alloc()));
  graph->nb_threads = 1;
  const std::string source = "video_size=" + ToString({frame.width, frame.height}) +
                             ":pix_fmt=" + std::to_string(frame.format) + ":time_base=1/1000:pixel_aspect=1/1";
  const std::string description =
      (steps.empty() ? "" : steps + ",") + ScaleStep(frame) + ",format=" + av_get_pix_fmt_name(format);
  Check(
      avfilter_graph_create_filter(&input, avfilter_get_by_name("buffer"), "in", source.c_str(), nullptr, graph.get()));
  Check(
      avfilter_graph_create_filter(&output, avfilter_get_by_name("buffersink"), "out", nullptr, nullptr, graph.get()));
  AVFilterInOut* begin = OrBadAlloc(avfilter_inout_alloc());
  AVFilterInOut* end = OrBadAlloc(avfilter_inout_alloc());
  *begin = {av_strdup("in"), input, 0, nullptr};
  *end = {av_strdup("out"), output, 0, nullptr};
  const int parsed = avfilter_graph_parse_ptr(graph.get(), description.c_str(), &end, &begin, nullptr);
  avfilter_inout_free(&begin);
  avfilter_inout_free(&end);
  Check(parsed);
  Check(avfilter_graph_config(graph.get(), nullptr));
  formatFrom = static_cast<AVPixelFormat>(frame.format);
  sizeFrom = {frame.width, frame.height};
}

FramePtr FrameConverter::Convert(FramePtr frame) {
  const Size now{frame->width, frame->height};
  if (!graph || frame->format != formatFrom || !(now == sizeFrom)) SetUp(*frame);
  const std::int64_t pts = frame->pts;
  const AVRational sampleAspect = frame->sample_aspect_ratio;
  Check(av_buffersrc_add_frame(input, frame.get()));
  FramePtr converted = NewFrame();
  Check(av_buffersink_get_frame(output, converted.get()));
  converted->pts = pts;
  converted->sample_aspect_ratio = sampleAspect;
  SetColour(*converted, target);
  return converted;
}

}  // namespace vidproc::tool
