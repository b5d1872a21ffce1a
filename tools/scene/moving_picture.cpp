// Keeps room and moving parts apart; see moving_picture.h.
#include "scene/moving_picture.h"

#include <algorithm>
#include <cmath>

namespace vidproc::scene {
namespace {

double ScaleFor(int width, int height) { return std::min(width / 1600.0, height / 900.0); }

void UseSceneUnits(cairo_t* context, int width, int height) {
  cairo_translate(context, width / 2.0, height);
  cairo_scale(context, ScaleFor(width, height), ScaleFor(width, height));
}

}  // namespace

MovingPicture::MovingPicture(int width, int height)
    : width(width),
      height(height),
      room(width, height),
      canvas(width, height),
      areas{AreaOf(kPresenterBox.from, kPresenterBox.to), AreaOf(kClockBox.from, kClockBox.to)},
      presenter(ScaleFor(width, height)) {
  UseSceneUnits(room.Context(), width, height);
  PaintRoom(room.Context());
  ShowRoom({0, 0, width, height});
}

/// In whole pairs of pixels.
Area MovingPicture::AreaOf(drawing::Point from, drawing::Point to) const {
  const double scale = ScaleFor(width, height);
  const auto column = [&](double x) { return static_cast<int>(std::lround((width / 2.0 + x * scale) / 2)) * 2; };
  const auto row = [&](double y) { return static_cast<int>(std::lround(height + y * scale)); };
  return {std::clamp(column(from.x), 0, width), std::clamp(row(from.y), 0, height), std::clamp(column(to.x), 0, width),
          std::clamp(row(to.y), 0, height)};
}

void MovingPicture::ShowRoom(const Area& area) {
  cairo_t* context = canvas.Context();
  cairo_set_operator(context, CAIRO_OPERATOR_SOURCE);
  cairo_set_source_surface(context, room.Surface(), 0, 0);
  cairo_rectangle(context, area.left, area.top, area.right - area.left, area.bottom - area.top);
  cairo_fill(context);
  cairo_set_operator(context, CAIRO_OPERATOR_OVER);
}

template <typename Painter>
void MovingPicture::Repaint(const Area& area, Painter paint) {
  cairo_t* context = canvas.Context();
  cairo_save(context);
  cairo_rectangle(context, area.left, area.top, area.right - area.left, area.bottom - area.top);
  cairo_clip(context);
  ShowRoom(area);
  UseSceneUnits(context, width, height);
  paint(context);
  cairo_restore(context);
}

void MovingPicture::PaintMoment(double seconds) {
  Repaint(areas[0], [&](cairo_t* context) { presenter.Paint(context, seconds); });
  Repaint(areas[1], [&](cairo_t* context) { PaintClockHands(context, seconds); });
}

}  // namespace vidproc::scene
