// The scene as planes in an AVFrame, for the FFmpeg libraries that take nothing packed: 4:2:2 in place of packed
// frames, else 4:2:0. Their conversions are not timed: they get their frames in the form they like best.
#pragma once

extern "C" {
#include <libavutil/frame.h>
#include <libavutil/imgutils.h>
}

#include <memory>

#include "frames.h"

namespace bench {

struct FreeFrame {
  void operator()(AVFrame* frame) const { av_frame_free(&frame); }
};
using PlanarFrame = std::unique_ptr<AVFrame, FreeFrame>;

inline PlanarFrame MakePlanarFrame(Format format, Size size, int index) {
  PlanarFrame frame(av_frame_alloc());
  const bool isPacked = format == Format::kPacked422;
  frame->format = isPacked ? AV_PIX_FMT_YUV422P : AV_PIX_FMT_YUV420P;
  frame->width = size.width;
  frame->height = size.height;
  if (av_frame_get_buffer(frame.get(), 0) < 0) return nullptr;
  const Bytes& scene = Frame(isPacked ? format : Format::kI420, size, index);
  if (!isPacked) {
    std::uint8_t* planes[4];
    int strides[4];
    av_image_fill_arrays(planes, strides, scene.data(), AV_PIX_FMT_YUV420P, size.width, size.height, 1);
    av_image_copy(frame->data, frame->linesize, const_cast<const std::uint8_t**>(planes), strides, AV_PIX_FMT_YUV420P,
                  size.width, size.height);
    return frame;
  }
  const auto row = [&](int plane, int y) { return frame->data[plane] + y * frame->linesize[plane]; };
  for (int y = 0; y < size.height; ++y) {
    UnpackRow(scene.data() + y * 2 * size.width, size.width, row(0, y), row(1, y), row(2, y));
  }
  return frame;
}

}  // namespace bench
