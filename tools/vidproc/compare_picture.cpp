// See compare_picture.h.
#include "compare_picture.h"

extern "C" {
#include <libavutil/imgutils.h>
}

#include <algorithm>
#include <cmath>

#include "frame_converter.h"
#include "picture.h"

namespace vidproc::tool {
namespace {

using namespace drawing;

constexpr Rgb kBackground{24, 26, 30}, kLabel{235, 235, 235};
constexpr int kNarrowest = 400, kWidest = 960;  ///< of a frame's column
constexpr int kGap = 4, kBar = 28;              ///< between the columns, and above each frame
constexpr double kLetters = 15, kEnlarged = 4;

/// The frame as RGB; its own fields tell what its samples mean.
Canvas ToCanvas(const AVFrame& frame) {
  const ColourTags rgb = {.matrix = AVCOL_SPC_RGB, .range = AVCOL_RANGE_JPEG};
  FrameConverter converter("", AV_PIX_FMT_0RGB32, rgb);
  const FramePtr pixels = converter.Convert(FramePtr(OrBadAlloc(av_frame_clone(&frame))));
  Canvas canvas(frame.width, frame.height);
  av_image_copy_plane(canvas.Pixels(), canvas.RowBytes(), pixels->data[0], pixels->linesize[0], 4 * frame.width,
                      frame.height);
  canvas.PixelsChanged();
  return canvas;
}

/// The shape of the picture on the screen, width by height.
double Shape(const AVFrame& frame) {
  const AVRational pixel = frame.sample_aspect_ratio;
  return frame.width * (pixel.num > 0 && pixel.den > 0 ? av_q2d(pixel) : 1) / frame.height;
}

void Label(cairo_t* context, Point start, const std::string& text) {
  SetFont(context, kLetters, true);
  SetColour(context, kLabel);
  Text(context, {start.x + 8, start.y + kBar - 9}, text);
}

/// Lays the frame's middle, 1 / `enlarged` of its width and height, over the rectangle.
void Place(cairo_t* context, const Canvas& frame, Size frameSize, Point corner, Size size, double enlarged) {
  cairo_save(context);
  cairo_rectangle(context, corner.x, corner.y, size.width, size.height);
  cairo_clip(context);
  cairo_translate(context, corner.x + size.width / 2.0, corner.y + size.height / 2.0);
  cairo_scale(context, enlarged * size.width / frameSize.width, enlarged * size.height / frameSize.height);
  cairo_set_source_surface(context, frame.Surface(), -frameSize.width / 2.0, -frameSize.height / 2.0);
  cairo_pattern_set_extend(cairo_get_source(context), CAIRO_EXTEND_PAD);
  cairo_pattern_set_filter(cairo_get_source(context), CAIRO_FILTER_GOOD);
  cairo_paint(context);
  cairo_restore(context);
}

}  // namespace

Canvas ComparePicture(const AVFrame& before, const AVFrame& after, const std::string& what) {
  const int width = std::clamp(std::max(before.width, after.width), kNarrowest, kWidest);
  const Size size{width, std::clamp(static_cast<int>(std::lround(width / Shape(before))), 1, 4 * kWidest)};
  Canvas picture(2 * size.width + kGap, 2 * (kBar + size.height));
  cairo_t* context = picture.Context();
  SetColour(context, kBackground);
  cairo_paint(context);
  double left = 0;
  for (const AVFrame* frame : {&before, &after}) {
    const Size frameSize{frame->width, frame->height};
    const Canvas pixels = ToCanvas(*frame);
    std::string name = (frame == &before ? "before " : "after ") + ToString(frameSize);
    if (frame == &after) name += ": " + what;
    Label(context, {left, 0}, name);
    Place(context, pixels, frameSize, {left, kBar}, size, 1);
    Label(context, {left, 0.0 + kBar + size.height}, "the middle enlarged");
    Place(context, pixels, frameSize, {left, 2.0 * kBar + size.height}, size, kEnlarged);
    left += size.width + kGap;
  }
  return picture;
}

}  // namespace vidproc::tool
