#include "resample.h"

#include <algorithm>
#include <numeric>

namespace {

using vidproc::filters::Bank;
using vidproc::filters::CentreTap;

constexpr int kHalf = 64;
constexpr int kBits = 7;

struct Axis {
  int in, out, up, down, taps;
  Bank bank;
};

int FirstSource(const Axis& axis, int k, int& phase) {
  const int numerator = 8 * (2 * k + 1) * axis.down - 8 * axis.up;
  const int doubled = 2 * numerator + axis.up;  // rounds to the nearest sixteenth
  const int position = doubled >= 0 ? doubled / (2 * axis.up) : -((2 * axis.up - 1 - doubled) / (2 * axis.up));
  phase = position & 15;
  return (position >> 4) - CentreTap(axis.taps);
}

std::uint8_t Finish(int sum) { return static_cast<std::uint8_t>(std::clamp((sum + kHalf) >> kBits, 0, 255)); }

Picture ScaleRows(const Picture& in, const Axis& axis) {
  Picture out(in.width, axis.out);
  std::vector<int> sums(static_cast<std::size_t>(in.width));
  for (int k = 0; k < axis.out; ++k) {
    int phase = 0;
    const int first = FirstSource(axis, k, phase);
    std::fill(sums.begin(), sums.end(), 0);
    for (int t = 0; t < axis.taps; ++t) {
      const int coefficient = axis.bank[phase][t];
      if (coefficient == 0) continue;
      const std::uint8_t* row = in.Row(std::clamp(first + t, 0, in.height - 1));
      for (int x = 0; x < in.width; ++x) sums[static_cast<std::size_t>(x)] += coefficient * row[x];
    }
    std::transform(sums.begin(), sums.end(), out.Row(k), Finish);
  }
  return out;
}

Picture Transpose(const Picture& in) {
  Picture out(in.height, in.width);
  for (int y = 0; y < in.height; ++y) {
    for (int x = 0; x < in.width; ++x) out.Row(x)[y] = in.Row(y)[x];
  }
  return out;
}

bool IsTooMuch(const Axis& axis) { return 2 * axis.down > axis.taps * axis.up; }

// Leaves the axis half its ratio.
Picture HalveRows(const Picture& in, Axis& axis, const BankDesign& design) {
  Axis half = {axis.in, (axis.in + 1) / 2, 1, 2, axis.taps, {}};
  design(1, 2, half.taps, half.bank);
  axis.in = half.out;
  axis.up *= 2;
  const int divisor = std::gcd(axis.up, axis.down);
  axis.up /= divisor;
  axis.down /= divisor;
  return ScaleRows(in, half);
}

Picture FinishRows(const Picture& in, Axis& axis, const BankDesign& design) {
  if (axis.up == axis.down) return in;
  design(axis.up, axis.down, axis.taps, axis.bank);
  return ScaleRows(in, axis);
}

Axis MakeAxis(int in, int out, int taps) {
  const int divisor = std::gcd(in, out);
  return {in, out, out / divisor, in / divisor, taps, {}};
}

}  // namespace

Picture Resample(const Picture& in, int width, int height, TapSet taps, const BankDesign& design,
                 const BankDesign& halving) {
  Axis vertical = MakeAxis(in.height, height, taps.vertical);
  Axis horizontal = MakeAxis(in.width, width, taps.horizontal);
  Picture picture = in;
  while (IsTooMuch(vertical) || IsTooMuch(horizontal)) {
    const bool halveRow = IsTooMuch(horizontal);
    if (IsTooMuch(vertical)) picture = HalveRows(picture, vertical, halving);
    if (halveRow) picture = Transpose(HalveRows(Transpose(picture), horizontal, halving));
  }
  picture = FinishRows(picture, vertical, design);
  return Transpose(FinishRows(Transpose(picture), horizontal, design));
}
