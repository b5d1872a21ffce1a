#include "reference/rows.h"

#include <algorithm>
#include <cmath>

#include "reference/lane.h"

namespace reference {
namespace {

constexpr int kMaxTaps = 16;

std::uint8_t Filter(const std::int16_t* coefficients, const int* samples, int taps, int shift) {
  int sum = 1 << (shift - 1);
  for (int t = 0; t < taps; ++t) sum += coefficients[t] * samples[t];
  return ClampToByte(sum >> shift);
}

std::uint8_t Denoise(const std::int16_t* coefficients, const int* samples, int taps, int edge, bool moves) {
  const int centre = taps / 2 - 1;
  std::int16_t weights[kMaxTaps];
  int others = 0;
  for (int t = 0; t < taps; ++t) {
    if (t == centre) continue;
    const int square = moves ? 0 : CappedSquare(samples[t] - samples[centre]);
    weights[t] = static_cast<std::int16_t>((DifferenceWeight(square, edge - 1) * coefficients[t] + 128) >> 8);
    others += weights[t];
  }
  weights[centre] = static_cast<std::int16_t>(128 - others);
  return Filter(weights, samples, taps, 7);
}

/// The square of the change is compared as a signed 16-bit number.
bool Moves(const std::uint8_t* previous, int at, int centre) {
  if (previous == nullptr) return false;
  const int change = previous[at] - centre;
  return Wrap16(change * change) >= 256;
}

/// Samples of the taps around source sample `source`, of the component that byte `component` of a sample is.
void TakeSamples(const Row& in, int source, int component, int taps, int step, int* samples) {
  const int count = static_cast<int>(in.size()) / step;
  for (int t = 0; t < taps; ++t) {
    const int at = std::clamp(source + t - (taps / 2 - 1), 0, count - 1);
    samples[t] = in.data()[at * step + component];
  }
}

}  // namespace

Place CornerPlace(std::int64_t k, std::int64_t up, std::int64_t down) {
  const std::int64_t source = k * down / up;
  return {static_cast<int>(source), static_cast<int>((k * down - source * up) * 16 / up)};
}

Place CentredPlace(int k, int up, int down, double inSpacing, double inFirst, double outSpacing, double outFirst) {
  const double place = (outSpacing * k + outFirst) * down / up;
  // Ratios of these tests divide exactly enough: the sum is off by far less than what separates it from a whole number.
  const double sixteenths = std::floor(16 * (place - inFirst) / inSpacing + 0.5 + 1e-9);
  const int source = static_cast<int>(std::floor(sixteenths / 16));
  return {source, static_cast<int>(sixteenths) - 16 * source};
}

Row FilterVertically(const std::vector<const std::uint8_t*>& rows, const std::int16_t* coefficients, int shift,
                     int bytes) {
  Row out;
  for (int b = 0; b < bytes; ++b) {
    int samples[kMaxTaps];
    std::transform(rows.begin(), rows.end(), samples, [b](const std::uint8_t* row) { return int{row[b]}; });
    out.push_back(Filter(coefficients, samples, static_cast<int>(rows.size()), shift));
  }
  return out;
}

Row ScaleHorizontally(const Row& in, const std::int16_t (*bank)[16], int taps, int shift,
                      const std::vector<Place>& places, int step) {
  Row out;
  for (const Place& place : places) {
    for (int component = 0; component < step; ++component) {
      int samples[kMaxTaps];
      TakeSamples(in, place.source, component, taps, step, samples);
      out.push_back(Filter(bank[place.phase], samples, taps, shift));
    }
  }
  return out;
}

Row DenoiseVertically(const std::vector<const std::uint8_t*>& rows, const std::int16_t* coefficients, int edge,
                      const std::uint8_t* previous, int bytes) {
  const int taps = static_cast<int>(rows.size());
  Row out;
  for (int b = 0; b < bytes; ++b) {
    int samples[kMaxTaps];
    std::transform(rows.begin(), rows.end(), samples, [b](const std::uint8_t* row) { return int{row[b]}; });
    out.push_back(Denoise(coefficients, samples, taps, edge, Moves(previous, b, samples[taps / 2 - 1])));
  }
  return out;
}

Row DenoiseHorizontally(const Row& in, const std::int16_t* coefficients, int taps, int edge,
                        const std::uint8_t* previous, int step) {
  Row out;
  for (int b = 0; b < static_cast<int>(in.size()); ++b) {
    int samples[kMaxTaps];
    TakeSamples(in, b / step, b % step, taps, step, samples);
    out.push_back(Denoise(coefficients, samples, taps, edge, Moves(previous, b, samples[taps / 2 - 1])));
  }
  return out;
}

Row BlendRow(const Row& values, const std::uint8_t* history, int strength, int shift) {
  Row out;
  for (const std::uint8_t value : values) {
    const int square = CappedSquare(*history - value);
    out.push_back(Blend(value, *history, HistoryWeight(square, shift, strength)));
    ++history;
  }
  return out;
}

}  // namespace reference
