// Line charts; see plot.h.
#include "plot.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <utility>

namespace vidproc::tool {
namespace {

using namespace drawing;

constexpr double kLetters = 14;
constexpr double kLeftMargin = 64, kRightMargin = 24, kTopMargin = 40, kBottomMargin = 56;

std::string Number(double value, int decimals) {
  std::array<char, 32> text{};
  std::snprintf(text.data(), text.size(), "%.*f", decimals, value == 0 ? 0.0 : value);
  return text.data();
}

/// Calls mark(value) for the grid lines of an axis.
template <typename Mark>
void ForEachStep(const Axis& axis, Mark mark) {
  constexpr double kSlack = 1e-9;
  const double first = std::ceil(axis.low / axis.step - kSlack);
  const double last = std::floor(axis.high / axis.step + kSlack);
  for (int i = 0; first + i <= last; ++i) mark((first + i) * axis.step);
}

/// Lines of one pixel are sharp in the middle of a pixel.
double Sharp(double place) { return std::floor(place) + 0.5; }

}  // namespace

Rgb RampColour(double share) {
  const auto mix = [share](std::uint8_t from, std::uint8_t to) {
    return static_cast<std::uint8_t>(std::lround(from + (to - from) * share));
  };
  return {mix(kBlue.r, kRed.r), mix(kBlue.g, kRed.g), mix(kBlue.b, kRed.b)};
}

double NiceStep(double span, int most) {
  double step = std::pow(10, std::floor(std::log10(span / most)));
  for (const double factor : {1.0, 2.0, 5.0, 10.0}) {
    if (span / (step * factor) <= most) return step * factor;
  }
  return step;
}

Chart::Chart(cairo_t* context, Point corner, Size size, const std::string& title, Axis x, Axis y)
    : context(context),
      xAxis(std::move(x)),
      yAxis(std::move(y)),
      left(corner.x + kLeftMargin),
      top(corner.y + kTopMargin),
      width(size.width - kLeftMargin - kRightMargin),
      height(size.height - kTopMargin - kBottomMargin) {
  DrawAxes(title);
}

void Chart::DrawAxes(const std::string& title) {
  const double bottom = top + height, right = left + width;
  SetFont(context, kLetters);
  ForEachStep(xAxis, [&](double value) {
    Line(context, {Sharp(PixelX(value)), top}, {Sharp(PixelX(value)), bottom});
    Stroke(context, 1, kGrid);
    SetColour(context, kInk);
    TextCentred(context, {PixelX(value), bottom + 20}, Number(value, xAxis.decimals));
  });
  ForEachStep(yAxis, [&](double value) {
    Line(context, {left, Sharp(PixelY(value))}, {right, Sharp(PixelY(value))});
    Stroke(context, 1, kGrid);
    SetColour(context, kInk);
    const std::string text = Number(value, yAxis.decimals);
    Text(context, {left - 8 - TextWidth(context, text), PixelY(value) + 0.36 * kLetters}, text);
  });
  Line(context, {left, Sharp(bottom)}, {right, Sharp(bottom)});
  Line(context, {Sharp(left), top}, {Sharp(left), bottom});
  Stroke(context, 1, kInk);
  TextCentred(context, {left + width / 2, bottom + 42}, xAxis.label);
  Text(context, {right - TextWidth(context, yAxis.label), top - 12}, yAxis.label);
  SetFont(context, kLetters, true);
  Text(context, {left, top - 12}, title);
}

double Chart::PixelX(double x) const {
  return left + (std::clamp(x, xAxis.low, xAxis.high) - xAxis.low) / (xAxis.high - xAxis.low) * width;
}

double Chart::PixelY(double y) const {
  return top + height - (std::clamp(y, yAxis.low, yAxis.high) - yAxis.low) / (yAxis.high - yAxis.low) * height;
}

void Chart::Curve(const std::vector<Point>& points, Rgb colour, double thickness) {
  for (const auto& [x, y] : points) cairo_line_to(context, PixelX(x), PixelY(y));
  Stroke(context, thickness, colour);
}

void Chart::Dot(Point point, double radius, Rgb colour) {
  Ellipse(context, {PixelX(point.x), PixelY(point.y)}, radius, radius);
  Fill(context, colour);
}

void Chart::VerticalLine(double x, Rgb colour) {
  Line(context, {PixelX(x), top}, {PixelX(x), top + height});
  Stroke(context, 1.5, colour);
}

void Chart::Label(double x, Rgb colour, const std::string& text, int line) {
  constexpr double kPadding = 4, kLine = 20;
  SetFont(context, kLetters);
  const double room = TextWidth(context, text) + 2 * kPadding;
  const double at = PixelX(x);
  const double start = at + room + 2 < left + width ? at + 2 : at - room - 2;
  const double bottom = top + 4 + (line + 1) * kLine;
  drawing::Rectangle(context, {start, bottom - kLine}, {start + room, bottom});
  Fill(context, kPaper);
  SetColour(context, colour);
  Text(context, {start + kPadding, bottom - 6}, text);
}

}  // namespace vidproc::tool
