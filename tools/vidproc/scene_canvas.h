// A UYVY drawing surface for the synthetic scene: shapes with soft edges, as a lens would give them, and text.
#pragma once

#include <algorithm>
#include <cstdint>
#include <string>
#include <vector>

#include "picture.h"

namespace vidproc::tool {

struct Yuv {
  double y = 16;
  double u = 128;
  double v = 128;
};

struct Point {
  double x = 0;
  double y = 0;
};

class SceneCanvas {
 public:
  explicit SceneCanvas(Size size) : size(size), bytes(2 * static_cast<std::size_t>(size.width * size.height)) {}

  /// Lays `colour` over the pixel; chroma belongs to the pair and follows its even pixel.
  void Blend(int x, int y, const Yuv& colour, double alpha);

  /// Calls shade(x, y), which gives the coverage 0..1 and may change the colour, for the pixels of a box.
  template <typename Shade>
  void Paint(Point from, Point to, Shade shade) {
    const int left = std::max(0, static_cast<int>(from.x) - 1);
    const int top = std::max(0, static_cast<int>(from.y) - 1);
    const int right = std::min(size.width, static_cast<int>(to.x) + 2);
    const int bottom = std::min(size.height, static_cast<int>(to.y) + 2);
    for (int y = top; y < bottom; ++y) {
      for (int x = left; x < right; ++x) {
        Yuv colour;
        const double alpha = shade(x + 0.5, y + 0.5, colour);
        if (alpha > 0) Blend(x, y, colour, alpha);
      }
    }
  }

  void Rectangle(Point from, Point to, const Yuv& colour);
  void Ellipse(Point centre, Point radius, const Yuv& colour);
  /// Letters of `dot` pixels a dot, the top left corner at `at`.
  void Text(Point at, double dot, const Yuv& colour, const std::string& text);

  Size size;
  std::vector<std::uint8_t> bytes;
};

/// Share of a pixel that lies inside an edge `distance` pixels away (positive: inside).
inline double Coverage(double distance) { return distance > 0.5 ? 1 : distance < -0.5 ? 0 : distance + 0.5; }

}  // namespace vidproc::tool
