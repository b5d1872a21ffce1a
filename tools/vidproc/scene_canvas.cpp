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
  const auto pixel = static_cast<std::size_t>(y) * static_cast<std::size_t>(size.width) + static_cast<std::size_t>(x);
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
  constexpr int kSide = 3;  // probes per pixel and direction
  const double end = at.x + static_cast<double>(text.size()) * kGlyphAdvance * dot;
  Paint(at, {end, at.y + kGlyphHeight * dot}, [&](double x, double y, Yuv& out) {
    out = colour;
    int hits = 0;
    for (int probe = 0; probe < kSide * kSide; ++probe) {
      const int right = probe % kSide - 1;
      const int down = probe / kSide - 1;
      const double column = (x - at.x + right / 3.0) / dot;
      const double row = (y - at.y + down / 3.0) / dot;
      const auto letter = static_cast<std::size_t>(std::max(0.0, column) / kGlyphAdvance);
      const int inLetter = static_cast<int>(column) % kGlyphAdvance;
      if (column < 0 || row < 0 || row >= kGlyphHeight || letter >= text.size() || inLetter >= kGlyphWidth) continue;
      hits += GlyphDot(text[letter], inLetter, static_cast<int>(row)) ? 1 : 0;
    }
    return static_cast<double>(hits) / (kSide * kSide);
  });
}

}  // namespace vidproc::tool
