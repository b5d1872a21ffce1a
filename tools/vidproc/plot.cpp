// Line charts; see plot.h.
#include "plot.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>

#include "bitmap_font.h"

namespace vidproc::tool {
namespace {

constexpr int kDot = 2;
constexpr int kLetterHeight = kGlyphHeight * kDot;
constexpr int kLeftMargin = 70;
constexpr int kRightMargin = 24;
constexpr int kTopMargin = 40;
constexpr int kBottomMargin = 62;

std::string Number(double value, int decimals) {
  std::array<char, 32> text{};
  std::snprintf(text.data(), text.size(), "%.*f", decimals, value == 0 ? 0.0 : value);
  return text.data();
}

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

Chart::Chart(Image& image, int left, int top, Size size, const std::string& title, const Axis& x, const Axis& y)
    : image(image),
      xAxis(x),
      yAxis(y),
      left(left + kLeftMargin),
      top(top + kTopMargin),
      width(size.width - kLeftMargin - kRightMargin),
      height(size.height - kTopMargin - kBottomMargin) {
  const double slack = 1e-9;
  for (double value = std::ceil(x.low / x.step - slack) * x.step; value <= x.high + slack; value += x.step) {
    image.Line(PixelX(value), this->top, PixelX(value), this->top + height, 1, kGrid);
    const std::string text = Number(value, x.decimals);
    image.Text(static_cast<int>(PixelX(value)) - Image::TextWidth(text, kDot) / 2, this->top + height + 12, kDot, kInk,
               text);
  }
  for (double value = std::ceil(y.low / y.step - slack) * y.step; value <= y.high + slack; value += y.step) {
    image.Line(this->left, PixelY(value), this->left + width, PixelY(value), 1, kGrid);
    const std::string text = Number(value, y.decimals);
    image.Text(this->left - 8 - Image::TextWidth(text, kDot), static_cast<int>(PixelY(value)) - kLetterHeight / 2, kDot,
               kInk, text);
  }
  image.Line(this->left, this->top + height, this->left + width, this->top + height, 1, kInk);
  image.Line(this->left, this->top, this->left, this->top + height, 1, kInk);
  image.Text(this->left, this->top - kLetterHeight - 10, kDot, kInk, title);
  image.Text(this->left + (width - Image::TextWidth(x.label, kDot)) / 2, this->top + height + 38, kDot, kInk, x.label);
  image.Text(this->left + width - Image::TextWidth(y.label, kDot), this->top - kLetterHeight - 10, kDot, kInk, y.label);
}

double Chart::PixelX(double x) const {
  return left + (std::clamp(x, xAxis.low, xAxis.high) - xAxis.low) / (xAxis.high - xAxis.low) * width;
}

double Chart::PixelY(double y) const {
  return top + height - (std::clamp(y, yAxis.low, yAxis.high) - yAxis.low) / (yAxis.high - yAxis.low) * height;
}

void Chart::Curve(const std::vector<std::pair<double, double>>& points, Rgb colour, double thickness, double alpha) {
  for (std::size_t i = 1; i < points.size(); ++i) {
    image.Line(PixelX(points[i - 1].first), PixelY(points[i - 1].second), PixelX(points[i].first),
               PixelY(points[i].second), thickness, colour, alpha);
  }
}

void Chart::Dot(double x, double y, double radius, Rgb colour) { image.Disc(PixelX(x), PixelY(y), radius, colour); }

void Chart::VerticalLine(double x, Rgb colour) { image.Line(PixelX(x), top, PixelX(x), top + height, 2, colour); }

void Chart::Label(double x, Rgb colour, const std::string& text, int line) {
  constexpr int kPadding = 4;
  const int room = Image::TextWidth(text, kDot) + 2 * kPadding;
  const int at = static_cast<int>(PixelX(x));
  const int boxLeft = at + room + 2 < left + width ? at + 2 : at - room - 1;
  const int boxTop = top + 4 + line * (kLineAdvance + 2) * kDot;
  image.FillRectangle(boxLeft, boxTop, room, kLetterHeight + kPadding, kPaper);
  image.Text(boxLeft + kPadding, boxTop + kPadding / 2, kDot, colour, text);
}

}  // namespace vidproc::tool
