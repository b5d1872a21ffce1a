// FFmpeg's frames as the library's; see library_frame.h.
#include "library_frame.h"

extern "C" {
#include <libavutil/imgutils.h>
#include <libavutil/pixdesc.h>
}

#include <algorithm>
#include <cstddef>
#include <iterator>

namespace vidproc::tool {
namespace {

vidproc_format FormatOf(AVPixelFormat format) {
  switch (format) {
    case AV_PIX_FMT_UYVY422:
      return VIDPROC_FORMAT_UYVY;
    case AV_PIX_FMT_YUYV422:
      return VIDPROC_FORMAT_YUYV;
    case AV_PIX_FMT_NV12:
      return VIDPROC_FORMAT_NV12;
    case AV_PIX_FMT_YUV422P:
      return VIDPROC_FORMAT_I422;
    default:
      return VIDPROC_FORMAT_I420;
  }
}

/// vidproc_input or vidproc_output, which differ in constness only.
template <typename View>
View ViewOf(const AVFrame& frame, const Rectangle& part) {
  const auto format = static_cast<AVPixelFormat>(frame.format);
  View view = {};
  view.format = FormatOf(format);
  view.width = part.size.width;
  view.height = part.size.height;
  const int chromaShift = av_pix_fmt_desc_get(format)->log2_chroma_h;
  for (int plane = 0; plane < av_pix_fmt_count_planes(format); ++plane) {
    const int shift = plane > 0 ? chromaShift : 0;
    const std::ptrdiff_t stride = frame.linesize[plane];
    const int rowBytes = av_image_get_linesize(format, part.size.width, plane);
    const std::ptrdiff_t rows = (part.size.height + (1 << shift) - 1) >> shift;
    view.plane[plane] =
        frame.data[plane] + (part.top >> shift) * stride + av_image_get_linesize(format, part.left, plane);
    view.stride[plane] = stride;
    view.bytes[plane] = static_cast<std::size_t>((rows - 1) * std::abs(stride) + rowBytes);
  }
  return view;
}

}  // namespace

bool IsLibraryFormat(AVPixelFormat format) {
  return std::find(std::begin(kLibraryFormats), std::end(kLibraryFormats), format) != std::end(kLibraryFormats);
}

FrameInfo InfoOf(AVPixelFormat format, Size size, AVChromaLocation location) {
  return {FormatOf(format), size.width, size.height,
          location == AVCHROMA_LOC_CENTER ? VIDPROC_SITING_CENTRE : VIDPROC_SITING_LEFT};
}

Input InputOf(const AVFrame& frame, const Rectangle& part) { return ViewOf<Input>(frame, part); }
Output OutputOf(AVFrame& frame, const Rectangle& part) { return ViewOf<Output>(frame, part); }

FramePool::FramePool(AVPixelFormat format, Size size, int rowAlignment)
    : format(format), size(size), rowAlignment(rowAlignment) {
  constexpr std::size_t kPadding = 64;  // that FFmpeg's filters may read
  const int bytes = av_image_get_buffer_size(format, size.width, size.height, rowAlignment);
  pool.reset(OrBadAlloc(av_buffer_pool_init(static_cast<std::size_t>(bytes) + kPadding, nullptr)));
}

FramePtr FramePool::Take() {
  FramePtr frame = NewFrame();
  frame->format = format;
  frame->width = size.width;
  frame->height = size.height;
  frame->buf[0] = OrBadAlloc(av_buffer_pool_get(pool.get()));
  av_image_fill_arrays(frame->data, frame->linesize, frame->buf[0]->data, format, size.width, size.height,
                       rowAlignment);
  return frame;
}

}  // namespace vidproc::tool
