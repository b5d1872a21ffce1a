// Frames from one pixel format, range and matrix to another, turned where that is asked for, by libavfilter.
#pragma once

#include <string>

#include "ffmpeg_handles.h"
#include "picture.h"

namespace vidproc::tool {

class FrameConverter {
 public:
  /// @param steps  filters that come first, separated by commas; may be empty
  /// @param target  colour of the frames to make, which are of `format`
  FrameConverter(std::string steps, AVPixelFormat format, const ColourTags& target);
  /// Throws ToolError. A frame of another format or size than the one before makes a new graph.
  FramePtr Convert(FramePtr frame);

 private:
  void SetUp(const AVFrame& frame);
  std::string ScaleStep(const AVFrame& frame) const;

  std::string steps;
  AVPixelFormat format;
  ColourTags target;
  FfmpegPtr<AVFilterGraph> graph;
  AVFilterContext* input = nullptr;
  AVFilterContext* output = nullptr;
  AVPixelFormat formatFrom = AV_PIX_FMT_NONE;
  Size sizeFrom;
};

bool IsRgb(AVPixelFormat format);

void SetColour(AVFrame& frame, const ColourTags& colour);
ColourTags ColourOf(const AVFrame& frame);

}  // namespace vidproc::tool
