#include "filters/kernel_shape.h"

#include <algorithm>
#include <cmath>

namespace vidproc::filters {
namespace {

constexpr double kPi = 3.14159265358979323846;

// A series instead of std::sin, whose last bit depends on the C library. After 11 terms the rest is below a rounding.
double SinPi(double x) {
  const double whole = std::floor(x + 0.5);
  const double angle = (x - whole) * kPi;
  double term = angle;
  double sum = angle;
  for (int k = 2; k <= 20; k += 2) {
    term = term * angle * angle / -(k * (k + 1.0));
    sum += term;
  }
  return std::fmod(whole, 2.0) == 0 ? sum : -sum;
}

double Sinc(double x) { return x == 0 ? 1.0 : SinPi(x) / (kPi * x); }

double CubicAt(double b, double c, double x) {
  if (x >= 2) return 0;
  if (x >= 1)
    return ((-b - 6 * c) * x * x * x + (6 * b + 30 * c) * x * x + (-12 * b - 48 * c) * x + 8 * b + 24 * c) / 6;
  return ((12 - 9 * b - 6 * c) * x * x * x + (-18 + 12 * b + 6 * c) * x * x + 6 - 2 * b) / 6;
}

}  // namespace

double SampleShape(const KernelShape& shape, double distance) {
  const double x = std::abs(distance) / shape.stretch;
  switch (shape.family) {
    case KernelFamily::kCubic:
      return CubicAt(shape.b, shape.c, x);
    case KernelFamily::kLanczos:
      return x < shape.lobes ? Sinc(x) * Sinc(x / shape.lobes) : 0.0;
    case KernelFamily::kBox:
      break;
  }
  return std::clamp((shape.width + 1) / 2 - x, 0.0, 1.0);
}

}  // namespace vidproc::filters
