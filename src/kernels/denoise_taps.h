// Edge-preserving taps for samples that are bytes: what weight a tap keeps by the difference of its sample from the
// centre, as tables. In an anonymous namespace, so that every unit has copies made for its own instruction set.
#pragma once

#include <cstdint>

#include "kernels/scale_job.h"

namespace vidproc {

/// The taps of a phase beside its centre that are not zero. From a difference of 16 on they weigh nothing.
struct DenoiseTaps {
  std::int32_t count;             ///< 0: the centre passes as it is
  std::int32_t offset[kMaxTaps];  ///< in rows or in samples, counted from the centre; of unused taps 0
  std::int16_t coefficient[kMaxTaps];
  std::int16_t centreCoefficient;  ///< what the others leave of 128
  alignas(16) std::uint8_t table[kMaxTaps][16];
};

/// How far the history draws a value up or down, by a difference below 16.
struct HistorySteps {
  alignas(16) std::uint8_t rise[16];
  alignas(16) std::uint8_t fall[16];
};

namespace {

/// What a coefficient keeps at a difference.
/// kept: the shifted square wraps in 16 bits, so that with a shift of 8 differences of 16 and more lose nothing.
constexpr std::uint8_t WeightAt(int difference, int coefficient, int shift) {
  const int square = difference < 16 ? difference * difference : 256;
  const int shifted = square << shift & 0xFFFF;
  return static_cast<std::uint8_t>(((256 - (shifted < 256 ? shifted : 256)) * coefficient + 128) >> 8);
}

/// The weights for all differences below 16.
inline void FillWeightTable(int coefficient, int shift, std::uint8_t (&table)[16]) {
  for (int difference = 0; difference < 16; ++difference) table[difference] = WeightAt(difference, coefficient, shift);
}

/// (weight * difference + 64) >> 7, for differences of both signs.
inline HistorySteps FindHistorySteps(int strength, int shift) {
  HistorySteps steps{};
  for (int difference = 0; difference < 16; ++difference) {
    const int product = WeightAt(difference, strength, shift) * difference;
    steps.rise[difference] = static_cast<std::uint8_t>((product + 64) >> 7);
    steps.fall[difference] = static_cast<std::uint8_t>((product + 63) >> 7);
  }
  return steps;
}

/// @param coefficients  of one phase, `taps` of them
/// @param shift         of the difference weight curve
inline DenoiseTaps FindDenoiseTaps(const std::int16_t* coefficients, int taps, int shift) {
  DenoiseTaps found{};
  const int centre = taps / 2 - 1;
  int centreCoefficient = 128;
  for (int t = 0; t < taps; ++t) {
    if (t == centre || coefficients[t] == 0) continue;
    found.offset[found.count] = t - centre;
    found.coefficient[found.count] = coefficients[t];
    centreCoefficient -= coefficients[t];
    FillWeightTable(coefficients[t], shift, found.table[found.count++]);
  }
  found.centreCoefficient = static_cast<std::int16_t>(centreCoefficient);
  return found;
}

}  // namespace
}  // namespace vidproc
