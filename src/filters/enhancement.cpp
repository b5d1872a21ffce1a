#include "filters/enhancement.h"

#include <algorithm>
#include <iterator>

namespace vidproc::filters {
namespace {

// Wraps where the quotient does not fit; the divisor is not 0.
std::int32_t Divide(std::int32_t dividend, std::int32_t divisor) {
  if (divisor == -1) return static_cast<std::int32_t>(0u - static_cast<std::uint32_t>(dividend));
  return dividend / divisor;
}

// Brings the phase to the sum `total`; the rounding residue goes to the first of its largest coefficients.
void Renormalise(std::int16_t* phase, int taps, std::int32_t total) {
  std::int32_t oldSum = 0;
  for (int tap = 0; tap < taps; ++tap) oldSum += phase[tap];
  if (oldSum == 0) return;
  std::int32_t newSum = 0;
  int largest = 0;
  std::int16_t largestValue = 0;
  for (int tap = 0; tap < taps; ++tap) {
    const std::uint32_t scaled = static_cast<std::uint32_t>(phase[tap]) * static_cast<std::uint32_t>(total);
    const std::uint32_t dividend = static_cast<std::uint32_t>(oldSum / 2) + scaled;
    phase[tap] = static_cast<std::int16_t>(Divide(static_cast<std::int32_t>(dividend), oldSum));
    newSum += phase[tap];
    if (phase[tap] > largestValue) {
      largest = tap;
      largestValue = phase[tap];
    }
  }
  const std::uint32_t residue = static_cast<std::uint32_t>(total) - static_cast<std::uint32_t>(newSum);
  phase[largest] = static_cast<std::int16_t>(static_cast<std::uint32_t>(phase[largest]) + residue);
}

}  // namespace

void BuildEnhancementKernel(std::uint32_t type, std::uint32_t strength, EnhancementKernel& kernel) {
  struct Shape {
    std::uint32_t centre, edge, corner;  // factors of the strength, modulo 2^32
  };
  static constexpr Shape kShapes[] = {{4, 0u - 1, 0}, {8, 0u - 1, 0u - 1}, {4, 0u - 2, 1}};
  if (type >= std::size(kShapes)) return;
  const Shape& shape = kShapes[type];
  const auto centre = static_cast<std::int16_t>(shape.centre * strength + 16);
  const auto edge = static_cast<std::int16_t>(shape.edge * strength);
  const auto corner = static_cast<std::int16_t>(shape.corner * strength);
  for (int row = 0; row < 3; ++row) {
    for (int column = 0; column < 3; ++column) {
      const int fromCentre = (row != 1) + (column != 1);
      kernel[row][column] = fromCentre == 0 ? centre : fromCentre == 1 ? edge : corner;
    }
  }
}

void FoldEnhancement(const EnhancementKernel& kernel, int taps, std::int32_t total, const Bank& bank, Bank& enhanced) {
  std::uint32_t weights[3];
  for (int column = 0; column < 3; ++column) {
    weights[column] = static_cast<std::uint32_t>(kernel[0][column] + kernel[1][column] + kernel[2][column]);
  }
  for (int phase = 0; phase < kPhases; ++phase) {
    for (int tap = 0; tap < taps; ++tap) {
      std::uint32_t sum = 8;
      for (int column = 0; column < 3; ++column) {
        const int neighbour = std::clamp(tap - 1 + column, 0, taps - 1);
        sum += weights[column] * static_cast<std::uint32_t>(bank[phase][neighbour]);
      }
      enhanced[phase][tap] = static_cast<std::int16_t>(static_cast<std::int32_t>(sum) / 16);
    }
    Renormalise(enhanced[phase], taps, total);
  }
}

}  // namespace vidproc::filters
