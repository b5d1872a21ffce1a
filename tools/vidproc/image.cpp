// Drawing and PNG; see image.h.
#include "image.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "bitmap_font.h"
#include "errors.h"
#include "ffmpeg_handles.h"
#include "picture_converter.h"

namespace vidproc::tool {

Image::Image(Size size, Rgb background)
    : size(size), rgb(3 * static_cast<std::size_t>(size.width) * static_cast<std::size_t>(size.height)) {
  FillRectangle(0, 0, size.width, size.height, background);
}

void Image::Blend(int x, int y, Rgb colour, double alpha) {
  if (x < 0 || y < 0 || x >= size.width || y >= size.height) return;
  std::uint8_t* pixel =
      &rgb[3 * (static_cast<std::size_t>(y) * static_cast<std::size_t>(size.width) + static_cast<std::size_t>(x))];
  const auto mix = [alpha](std::uint8_t& to, std::uint8_t from) {
    to = static_cast<std::uint8_t>(std::lround(to + (from - to) * alpha));
  };
  mix(pixel[0], colour.r);
  mix(pixel[1], colour.g);
  mix(pixel[2], colour.b);
}

void Image::FillRectangle(int left, int top, int width, int height, Rgb colour) {
  for (int y = top; y < top + height; ++y) {
    for (int x = left; x < left + width; ++x) Blend(x, y, colour, 1);
  }
}

void Image::Line(double x0, double y0, double x1, double y1, double thickness, Rgb colour, double alpha) {
  const double dx = x1 - x0, dy = y1 - y0;
  const double lengthSquared = std::max(dx * dx + dy * dy, 1e-9);
  const double reach = thickness / 2 + 1;
  const int left = static_cast<int>(std::floor(std::min(x0, x1) - reach));
  const int right = static_cast<int>(std::ceil(std::max(x0, x1) + reach));
  const int top = static_cast<int>(std::floor(std::min(y0, y1) - reach));
  const int bottom = static_cast<int>(std::ceil(std::max(y0, y1) + reach));
  for (int y = top; y <= bottom; ++y) {
    for (int x = left; x <= right; ++x) {
      const double along = std::clamp(((x - x0) * dx + (y - y0) * dy) / lengthSquared, 0.0, 1.0);
      const double distance = std::hypot(x - x0 - along * dx, y - y0 - along * dy);
      const double coverage = std::clamp(thickness / 2 + 0.5 - distance, 0.0, 1.0);
      if (coverage > 0) Blend(x, y, colour, coverage * alpha);
    }
  }
}

void Image::Disc(double x, double y, double radius, Rgb colour) { Line(x, y, x, y, 2 * radius, colour); }

int Image::TextWidth(const std::string& text, int dot) {
  return text.empty() ? 0 : (static_cast<int>(text.size()) * kGlyphAdvance - 1) * dot;
}

void Image::Text(int x, int y, int dot, Rgb colour, const std::string& text) {
  for (const char character : text) {
    for (int row = 0; row < kGlyphHeight; ++row) {
      for (int column = 0; column < kGlyphWidth; ++column) {
        if (GlyphDot(character, column, row)) FillRectangle(x + column * dot, y + row * dot, dot, dot, colour);
      }
    }
    x += kGlyphAdvance * dot;
  }
}

void Image::Place(const Image& other, int left, int top) {
  const std::size_t rowBytes = 3 * static_cast<std::size_t>(other.size.width);
  for (int y = 0; y < other.size.height; ++y) {
    const std::size_t to =
        3 * (static_cast<std::size_t>(top + y) * static_cast<std::size_t>(size.width) + static_cast<std::size_t>(left));
    std::memcpy(&rgb[to], &other.rgb[static_cast<std::size_t>(y) * rowBytes], rowBytes);
  }
}

Image ToRgb(const Picture& picture, const ColourTags& colour, Size target) {
  Image image(target, {});
  FramePtr from = WrapFrame(PackedFormat(picture.layout), picture.size, picture.bytes.data());
  from->colorspace = MatrixOf(colour, picture.size);
  from->color_range = AVCOL_RANGE_MPEG;
  FramePtr to = WrapFrame(AV_PIX_FMT_RGB24, target, image.rgb.data());
  Scaler().Convert(*from, *to);
  return image;
}

void WritePng(OutputFile& file, const Image& image) {
  const AVCodec* codec = avcodec_find_encoder(AV_CODEC_ID_PNG);
  if (codec == nullptr) throw ToolError(kFailure, "this FFmpeg has no PNG encoder");
  CodecPtr encoder(OrBadAlloc(avcodec_alloc_context3(codec)));
  encoder->pix_fmt = AV_PIX_FMT_RGB24;
  encoder->width = image.size.width;
  encoder->height = image.size.height;
  encoder->time_base = {1, 1};
  PacketPtr packet(OrBadAlloc(av_packet_alloc()));
  FramePtr frame = WrapFrame(AV_PIX_FMT_RGB24, image.size, image.rgb.data());
  int result = avcodec_open2(encoder.get(), codec, nullptr);
  if (result >= 0) result = avcodec_send_frame(encoder.get(), frame.get());
  if (result >= 0) result = avcodec_send_frame(encoder.get(), nullptr);
  if (result >= 0) result = avcodec_receive_packet(encoder.get(), packet.get());
  if (result < 0) throw ToolError(kFailure, "PNG encoding failed: " + FfmpegError(result));
  file.Write(packet->data, static_cast<std::size_t>(packet->size));
}

}  // namespace vidproc::tool
