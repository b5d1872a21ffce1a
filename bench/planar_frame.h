// The scene as planar 4:2:2 in an AVFrame, for the FFmpeg libraries that take nothing packed. Their conversions are not
// timed: they get their frames in the form they like best.
#pragma once

extern "C" {
#include <libavutil/frame.h>
}

#include <memory>

#include "frames.h"

namespace bench {

struct FreeFrame {
  void operator()(AVFrame* frame) const { av_frame_free(&frame); }
};
using PlanarFrame = std::unique_ptr<AVFrame, FreeFrame>;

inline PlanarFrame MakePlanarFrame(Size size, int index) {
  PlanarFrame frame(av_frame_alloc());
  frame->format = AV_PIX_FMT_YUV422P;
  frame->width = size.width;
  frame->height = size.height;
  if (av_frame_get_buffer(frame.get(), 0) < 0) return nullptr;
  const Bytes& packed = Frame(Format::kPacked422, size, index);
  const auto row = [&](int plane, int y) { return frame->data[plane] + y * frame->linesize[plane]; };
  for (int y = 0; y < size.height; ++y) {
    UnpackRow(packed.data() + y * 2 * size.width, size.width, row(0, y), row(1, y), row(2, y));
  }
  return frame;
}

}  // namespace bench
