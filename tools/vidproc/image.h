// An RGB picture to draw on, for comparisons and plots, and its way into a PNG file.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "file_io.h"
#include "picture.h"

namespace vidproc::tool {

struct Rgb {
  std::uint8_t r = 0;
  std::uint8_t g = 0;
  std::uint8_t b = 0;
};

class Image {
 public:
  Image(Size size, Rgb background);
  void FillRectangle(int left, int top, int width, int height, Rgb colour);
  /// A straight line of `thickness` pixels with soft edges.
  void Line(double x0, double y0, double x1, double y1, double thickness, Rgb colour, double alpha = 1);
  void Disc(double x, double y, double radius, Rgb colour);
  /// Letters of `dot` pixels a dot, the top left corner at (x, y).
  void Text(int x, int y, int dot, Rgb colour, const std::string& text);
  static int TextWidth(const std::string& text, int dot);
  /// Copies another image into this one.
  void Place(const Image& other, int left, int top);

  Size size;
  std::vector<std::uint8_t> rgb;  ///< rows without gaps

 private:
  void Blend(int x, int y, Rgb colour, double alpha);
};

/// The picture as RGB, scaled to `target`.
Image ToRgb(const Picture& picture, const ColourTags& colour, Size target);

/// Writes the image as a PNG; the file stays open.
void WritePng(OutputFile& file, const Image& image);

}  // namespace vidproc::tool
