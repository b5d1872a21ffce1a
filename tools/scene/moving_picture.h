// The scene as painted colours: what stands still is painted once, what moves anew for every moment.
#pragma once

#include <array>

#include "scene/drawing.h"
#include "scene/rgb_picture.h"

namespace vidproc::scene {

/// Sways, talks and waves.
class Presenter {
 public:
  /// For pictures of `scale` pixels a scene unit.
  explicit Presenter(double scale);
  void Paint(cairo_t* context, double seconds) const;

 private:
  drawing::SurfacePtr torso;  ///< painted once: it only moves from side to side
};

class MovingPicture {
 public:
  MovingPicture(int width, int height);
  /// Paints the moment into the moving areas.
  void PaintMoment(double seconds);
  RgbPicture Picture() { return {canvas.Pixels(), canvas.RowBytes()}; }
  const std::array<Area, 2>& MovingAreas() const { return areas; }

 private:
  Area AreaOf(drawing::Point from, drawing::Point to) const;
  void ShowRoom(const Area& area);
  template <typename Painter>
  void Repaint(const Area& area, Painter paint);

  int width, height;
  drawing::Canvas room;  ///< what stands still
  drawing::Canvas canvas;
  std::array<Area, 2> areas;  ///< presenter, clock
  Presenter presenter;
};

// Painters. They work in units of a 900th of the height of a 16:9 picture, x to the right from the middle, y downwards
// from the lower edge, so that -800 <= x <= 800 and -900 <= y <= 0; other shapes of picture show more of wall and desk.

struct Box {
  drawing::Point from, to;
};
inline constexpr Box kPresenterBox{{-420, -800}, {440, -104}};
inline constexpr Box kClockBox{{-490, -800}, {-290, -600}};

void PaintRoom(cairo_t* context);
void PaintClockHands(cairo_t* context, double seconds);

}  // namespace vidproc::scene
