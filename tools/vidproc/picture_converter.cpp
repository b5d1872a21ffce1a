// Conversions between pixel layouts; see picture_converter.h.
#include "picture_converter.h"

extern "C" {
#include <libavutil/imgutils.h>
#include <libavutil/opt.h>
#include <libavutil/pixdesc.h>
}

#include <cstring>
#include <utility>

#include "errors.h"

namespace vidproc::tool {
namespace {

constexpr int kFlags = SWS_BICUBIC | SWS_ACCURATE_RND | SWS_FULL_CHR_H_INT | SWS_FULL_CHR_H_INP | SWS_BITEXACT;

bool IsRgb(int format) {
  const AVPixFmtDescriptor* description = av_pix_fmt_desc_get(static_cast<AVPixelFormat>(format));
  return description != nullptr && (description->flags & AV_PIX_FMT_FLAG_RGB) != 0;
}

bool IsFullRange(const AVFrame& frame) {
  switch (frame.format) {
    case AV_PIX_FMT_YUVJ420P:
    case AV_PIX_FMT_YUVJ422P:
    case AV_PIX_FMT_YUVJ444P:
    case AV_PIX_FMT_YUVJ440P:
    case AV_PIX_FMT_YUVJ411P:
      return true;
    default:
      return frame.color_range == AVCOL_RANGE_JPEG || IsRgb(frame.format);
  }
}

/// libswscale wants the range apart from the format.
AVPixelFormat WithoutRange(int format) {
  switch (format) {
    case AV_PIX_FMT_YUVJ420P:
      return AV_PIX_FMT_YUV420P;
    case AV_PIX_FMT_YUVJ422P:
      return AV_PIX_FMT_YUV422P;
    case AV_PIX_FMT_YUVJ444P:
      return AV_PIX_FMT_YUV444P;
    case AV_PIX_FMT_YUVJ440P:
      return AV_PIX_FMT_YUV440P;
    case AV_PIX_FMT_YUVJ411P:
      return AV_PIX_FMT_YUV411P;
    default:
      return static_cast<AVPixelFormat>(format);
  }
}

const std::uint8_t* Row(const AVFrame& frame, int plane, std::size_t y) {
  return frame.data[plane] + static_cast<std::ptrdiff_t>(y) * frame.linesize[plane];
}

void CopyRows(const AVFrame& frame, int plane, std::size_t rowBytes, std::size_t rows, std::uint8_t* to) {
  for (std::size_t y = 0; y < rows; ++y) std::memcpy(to + y * rowBytes, Row(frame, plane, y), rowBytes);
}

void InterleavePair(const std::uint8_t* cb, const std::uint8_t* cr, std::size_t count, std::uint8_t* to) {
  for (std::size_t i = 0; i < count; ++i) {
    to[2 * i] = cb[i];
    to[2 * i + 1] = cr[i];
  }
}

void PackUyvy(const AVFrame& frame, Picture& picture) {
  const std::size_t pairs = picture.Width() / 2;
  for (std::size_t y = 0; y < picture.Height(); ++y) {
    const std::uint8_t* luma = Row(frame, 0, y);
    const std::uint8_t* cb = Row(frame, 1, y);
    const std::uint8_t* cr = Row(frame, 2, y);
    std::uint8_t* to = picture.bytes.data() + y * picture.RowBytes();
    for (std::size_t i = 0; i < pairs; ++i, to += 4) {
      to[0] = cb[i];
      to[1] = luma[2 * i];
      to[2] = cr[i];
      to[3] = luma[2 * i + 1];
    }
  }
}

/// Moves the bytes where the layouts agree; false where a real conversion is needed.
bool Repack(const AVFrame& frame, Picture& picture) {
  const std::size_t rows = picture.Height();
  if (frame.format == PackedFormat(picture.layout)) {
    CopyRows(frame, 0, picture.RowBytes(), rows, picture.bytes.data());
    if (picture.layout == Layout::kNv12) CopyRows(frame, 1, picture.Width(), picture.ChromaRows(), picture.Chroma());
    return true;
  }
  if (frame.format != PlanarFormat(picture.layout)) return false;
  if (picture.layout == Layout::kUyvy) {
    PackUyvy(frame, picture);
  } else {
    CopyRows(frame, 0, picture.Width(), rows, picture.bytes.data());
    for (std::size_t y = 0; y < picture.ChromaRows(); ++y) {
      InterleavePair(Row(frame, 1, y), Row(frame, 2, y), picture.Width() / 2, picture.Chroma() + y * picture.Width());
    }
  }
  return true;
}

}  // namespace

AVPixelFormat PackedFormat(Layout layout) { return layout == Layout::kUyvy ? AV_PIX_FMT_UYVY422 : AV_PIX_FMT_NV12; }

AVPixelFormat PlanarFormat(Layout layout) { return layout == Layout::kUyvy ? AV_PIX_FMT_YUV422P : AV_PIX_FMT_YUV420P; }

void ToPlanar(const Picture& picture, std::vector<std::uint8_t>& planes) {
  planes.resize(picture.bytes.size());
  const std::size_t luma = picture.LumaBytes();
  const std::size_t chroma = (picture.bytes.size() - luma) / 2;
  std::uint8_t* y = planes.data();
  std::uint8_t* cb = y + luma;
  std::uint8_t* cr = cb + chroma;
  if (picture.layout == Layout::kUyvy) {
    const std::uint8_t* from = picture.bytes.data();
    for (std::size_t i = 0; i < chroma; ++i, from += 4) {
      cb[i] = from[0];
      y[2 * i] = from[1];
      cr[i] = from[2];
      y[2 * i + 1] = from[3];
    }
  } else {
    std::memcpy(y, picture.bytes.data(), luma);
    for (std::size_t i = 0; i < chroma; ++i) {
      cb[i] = picture.Chroma()[2 * i];
      cr[i] = picture.Chroma()[2 * i + 1];
    }
  }
}

AVColorSpace MatrixOf(const ColourTags& colour, Size size) {
  const bool known = colour.matrix != AVCOL_SPC_UNSPECIFIED && colour.matrix != AVCOL_SPC_RGB;
  if (known) return colour.matrix;
  return size.height >= 720 ? AVCOL_SPC_BT709 : AVCOL_SPC_SMPTE170M;
}

void BorrowBytes(AVPixelFormat format, Size size, const std::uint8_t* bytes, AVFrame& frame) {
  frame.format = format;
  frame.width = size.width;
  frame.height = size.height;
  av_image_fill_arrays(frame.data, frame.linesize, bytes, format, size.width, size.height, 1);
}

FramePtr WrapFrame(AVPixelFormat format, Size size, const std::uint8_t* bytes) {
  FramePtr frame(OrBadAlloc(av_frame_alloc()));
  BorrowBytes(format, size, bytes, *frame);
  return frame;
}

FramePtr WrapPicture(const Picture& picture, const StreamInfo& info) {
  FramePtr frame = WrapFrame(PackedFormat(picture.layout), picture.size, picture.bytes.data());
  frame->colorspace = MatrixOf(info.colour, picture.size);
  frame->color_range = AVCOL_RANGE_MPEG;
  frame->sample_aspect_ratio = info.sampleAspect;
  return frame;
}

void Scaler::SetUp(const Setting& wanted, const AVFrame& tagged) {
  context.reset(OrBadAlloc(sws_alloc_context()));
  // The ranges come before the set-up: without them it may choose a plain repacking that changes no value.
  const std::pair<const char*, int> fields[] = {
      {"srcw", wanted.from.width},     {"srch", wanted.from.height},  {"src_format", wanted.formatFrom},
      {"dstw", wanted.to.width},       {"dsth", wanted.to.height},    {"dst_format", wanted.formatTo},
      {"src_range", wanted.rangeFrom}, {"dst_range", wanted.rangeTo}, {"sws_flags", kFlags}};
  for (const auto& [name, value] : fields) av_opt_set_int(context.get(), name, value, 0);
  if (sws_init_context(context.get(), nullptr, nullptr) < 0) {
    const char* name = av_get_pix_fmt_name(wanted.formatFrom);
    throw ToolError(kFailure, std::string("libswscale cannot convert from ") + (name ? name : "this format"));
  }
  const int* matrix = sws_getCoefficients(tagged.colorspace);
  sws_setColorspaceDetails(context.get(), matrix, wanted.rangeFrom, matrix, wanted.rangeTo, 0, 1 << 16, 1 << 16);
}

void Scaler::Convert(const AVFrame& from, AVFrame& to) {
  const AVFrame& tagged = IsRgb(from.format) ? to : from;  // RGB has no matrix of its own
  const Setting wanted{{from.width, from.height}, {to.width, to.height},
                       WithoutRange(from.format), static_cast<AVPixelFormat>(to.format),
                       IsFullRange(from) ? 1 : 0, IsRgb(to.format) ? 1 : 0,
                       tagged.colorspace};
  if (!context || !(wanted == setting)) SetUp(wanted, tagged);
  setting = wanted;
  if (sws_scale(context.get(), from.data, from.linesize, 0, from.height, to.data, to.linesize) != to.height) {
    throw ToolError(kFailure, "libswscale failed to convert a frame");
  }
}

void PictureConverter::Convert(const AVFrame& frame, Picture& picture) {
  picture.Allocate(layout, {frame.width, frame.height});
  const bool full = IsFullRange(frame);
  if (!full && Repack(frame, picture)) return;
  convertedFullRange = convertedFullRange || full;
  FramePtr target = WrapFrame(PackedFormat(layout), picture.size, picture.bytes.data());
  target->colorspace = MatrixOf({.matrix = frame.colorspace}, picture.size);
  scaler.Convert(frame, *target);
}

}  // namespace vidproc::tool
