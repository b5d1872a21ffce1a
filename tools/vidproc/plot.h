// Line charts on an image: a frame with grid and numbers, curves, marks.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "image.h"

namespace vidproc::tool {

struct Axis {
  double low = 0;
  double high = 1;
  double step = 1;   ///< between grid lines
  int decimals = 0;  ///< of the numbers
  std::string label;
};

constexpr Rgb kPaper{255, 255, 255};
constexpr Rgb kInk{40, 44, 52};
constexpr Rgb kGrid{225, 228, 232};
constexpr Rgb kFaint{190, 196, 204};
constexpr Rgb kBlue{31, 102, 181};
constexpr Rgb kRed{200, 50, 40};
constexpr Rgb kGreen{30, 140, 70};

/// A colour between blue and red for 0 <= share <= 1.
Rgb RampColour(double share);

/// A step of 1, 2 or 5 times a power of ten that divides the span into at most `most` parts.
double NiceStep(double span, int most);

class Chart {
 public:
  /// The rectangle holds everything, numbers and title included.
  Chart(Image& image, int left, int top, Size size, const std::string& title, const Axis& x, const Axis& y);
  /// Values beyond the axes run along the border.
  void Curve(const std::vector<std::pair<double, double>>& points, Rgb colour, double thickness, double alpha = 1);
  void Dot(double x, double y, double radius, Rgb colour);
  void VerticalLine(double x, Rgb colour);
  /// A text beside a vertical line at x, `line` lines down from the top.
  void Label(double x, Rgb colour, const std::string& text, int line = 0);

 private:
  double PixelX(double x) const;
  double PixelY(double y) const;

  Image& image;
  Axis xAxis, yAxis;
  int left, top, width, height;  ///< of the area inside the axes
};

}  // namespace vidproc::tool
