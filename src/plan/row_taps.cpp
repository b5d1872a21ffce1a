#include "plan/row_taps.h"

#include <algorithm>

namespace vidproc {
namespace {

/// The weight that a coefficient keeps at a difference, in 16-bit lanes.
/// kept: the shifted square wraps, so that with a shift of 8 differences of 16 and more lose nothing.
std::uint8_t WeightAt(int difference, int coefficient, int shift) {
  const int square = std::min(difference * difference, 256);
  const int lost = std::min(square << shift & 0xFFFF, 256);
  return static_cast<std::uint8_t>(((256 - lost) * coefficient + 128) >> 8);
}

void FillWeights(int coefficient, int shift, std::uint8_t (&weights)[16]) {
  for (int difference = 0; difference < 16; ++difference)
    weights[difference] = WeightAt(difference, coefficient, shift);
}

}  // namespace

VerticalTaps PlanVerticalTaps(const std::int16_t* coefficients, std::int32_t taps, const ByteRowShape& /*shape*/) {
  VerticalTaps plan{};
  const int centre = taps / 2 - 1;
  for (int tap = 0; tap < taps; ++tap) {
    if (coefficients[tap] == 0) continue;
    plan.row[plan.count] = tap - centre;
    plan.coefficient[plan.count++] = coefficients[tap];
  }
  plan.count = std::max(plan.count, 1);
  return plan;
}

DenoiseTaps PlanDenoiseTaps(const std::int16_t* coefficients, std::int32_t taps, std::int32_t edge) {
  DenoiseTaps plan{};
  const int centre = taps / 2 - 1;
  plan.centreCoefficient = 128;
  for (int tap = 0; tap < taps; ++tap) {
    if (tap == centre || coefficients[tap] == 0) continue;
    plan.offset[plan.count] = tap - centre;
    plan.coefficient[plan.count] = coefficients[tap];
    plan.centreCoefficient = static_cast<std::int16_t>(plan.centreCoefficient - coefficients[tap]);
    FillWeights(coefficients[tap], edge - 1, plan.weights[plan.count++]);
  }
  return plan;
}

HistoryBlend PlanHistoryBlend(std::int32_t strength, std::int32_t shift) {
  HistoryBlend blend{};
  FillWeights(strength, shift, blend.weights);
  blend.weightFrom16 = WeightAt(16, strength, shift);
  return blend;
}

}  // namespace vidproc
