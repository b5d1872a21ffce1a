// Shapes and text of the synthetic scene; see scene_canvas.h.
#include "scene_canvas.h"

#include <algorithm>
#include <cmath>

#include "bitmap_font.h"

namespace vidproc::tool {
namespace {

void Mix(std::uint8_t& byte, double value, double alpha) {
  byte = static_cast<std::uint8_t>(std::clamp(byte + (value - byte) * alpha + 0.5, 0.0, 255.0));
}

}  // namespace

void SceneCanvas::Blend(int x, int y, const Yuv& colour, double alpha) {
  const std::size_t pixel = static_cast<std::size_t>(y * size.width + x);
  Mix(bytes[2 * pixel + 1], colour.y, alpha);
  if (x % 2 == 0) {
    Mix(bytes[2 * pixel], colour.u, alpha);
    Mix(bytes[2 * pixel + 2], colour.v, alpha);
  }
}

void SceneCanvas::Rectangle(Point from, Point to, const Yuv& colour) {
  Paint(from, to, [&](double x, double y, Yuv& out) {
    out = colour;
    return Coverage(std::min(x - from.x, to.x - x)) * Coverage(std::min(y - from.y, to.y - y));
  });
}

void SceneCanvas::Ellipse(Point centre, Point radius, const Yuv& colour) {
  const double smaller = std::min(radius.x, radius.y);
  Paint({centre.x - radius.x, centre.y - radius.y}, {centre.x + radius.x, centre.y + radius.y},
        [&](double x, double y, Yuv& out) {
          out = colour;
          const double distance = std::hypot((x - centre.x) / radius.x, (y - centre.y) / radius.y);
          return Coverage((1 - distance) * smaller);
        });
}

void SceneCanvas::Text(Point at, double dot, const Yuv& colour, const std::string& text) {
  for (std::size_t i = 0; i < text.size(); ++i) {
    const Point cell{at.x + static_cast<double>(i) * kGlyphAdvance * dot, at.y};
    if (cell.x > size.width || cell.x + kGlyphAdvance * dot < 0) continue;
    for (int row = 0; row < kGlyphHeight; ++row) {
      for (int column = 0; column < kGlyphWidth; ++column) {
        if (!GlyphDot(text[i], column, row)) continue;
        const Point corner{cell.x + column * dot, cell.y + row * dot};
        Rectangle(corner, {corner.x + dot, corner.y + dot}, colour);
      }
    }
  }
}

}  // namespace vidproc::tool
