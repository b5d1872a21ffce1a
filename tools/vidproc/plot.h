// Line charts: a frame with grid and numbers, curves, marks.
#pragma once

#include <string>
#include <vector>

#include "picture.h"
#include "scene/drawing.h"

namespace vidproc::tool {

struct Axis {
  double low = 0;
  double high = 1;
  double step = 1;   ///< between grid lines
  int decimals = 0;  ///< of the numbers
  std::string label;
};

inline constexpr drawing::Rgb kPaper{255, 255, 255};
inline constexpr drawing::Rgb kInk{40, 44, 52};
inline constexpr drawing::Rgb kGrid{225, 228, 232};
inline constexpr drawing::Rgb kFaint{190, 196, 204};
inline constexpr drawing::Rgb kBlue{31, 102, 181};
inline constexpr drawing::Rgb kRed{200, 50, 40};
inline constexpr drawing::Rgb kGreen{30, 140, 70};

/// A colour between blue and red for 0 <= share <= 1.
drawing::Rgb RampColour(double share);

/// A step of 1, 2 or 5 times a power of ten that divides the span into at most `most` parts.
double NiceStep(double span, int most);

class Chart {
 public:
  /// The rectangle from `corner` holds everything, numbers and title included.
  Chart(cairo_t* context, drawing::Point corner, Size size, const std::string& title, Axis x, Axis y);
  /// Values beyond the axes run along the border.
  void Curve(const std::vector<drawing::Point>& points, drawing::Rgb colour, double thickness);
  void Dot(drawing::Point point, double radius, drawing::Rgb colour);
  void VerticalLine(double x, drawing::Rgb colour);
  /// A text beside a vertical line at x, `line` lines down from the top.
  void Label(double x, drawing::Rgb colour, const std::string& text, int line = 0);

 private:
  void DrawAxes(const std::string& title);
  double PixelX(double x) const;
  double PixelY(double y) const;

  cairo_t* context;
  Axis xAxis, yAxis;
  double left, top, width, height;  ///< of the area inside the axes
};

}  // namespace vidproc::tool
