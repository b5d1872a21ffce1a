#include "plan/row_taps.h"

#include <algorithm>
#include <utility>

#include "plan/byte_sums.h"

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

/// Without those that are zero, but for the centre of no others.
VerticalTaps CollectTaps(const std::int16_t* coefficients, std::int32_t taps) {
  VerticalTaps plan{};
  for (int tap = 0; tap < taps; ++tap) {
    if (coefficients[tap] == 0) continue;
    plan.row[plan.count] = tap - (taps / 2 - 1);
    plan.coefficient[plan.count++] = coefficients[tap];
  }
  plan.count = std::max(plan.count, 1);
  return plan;
}

/// Arranges taps as the byte form takes them: one beyond signed bytes as its two halves, and the largest at the very
/// end, beside the smallest.
/// @return whether there is room.
bool ArrangeInPairs(VerticalTaps& plan) {
  const auto append = [&](int row, int coefficient) {
    plan.row[plan.count] = row;
    plan.coefficient[plan.count++] = static_cast<std::int16_t>(coefficient);
  };
  const auto exchange = [&](const std::int16_t* a, int b) {
    std::swap(plan.row[a - plan.coefficient], plan.row[b]);
    std::swap(plan.coefficient[a - plan.coefficient], plan.coefficient[b]);
  };
  for (int i = 0, given = plan.count; i < given; ++i) {
    if (plan.coefficient[i] <= 127) continue;
    if (plan.count == kMaxVerticalTaps) return false;
    const int half = plan.coefficient[i] / 2;
    append(plan.row[i], plan.coefficient[i] - half);
    plan.coefficient[i] = static_cast<std::int16_t>(half);
  }
  // The kernels have no forms for five and seven.
  if (plan.count == 5 || plan.count == 7) append(plan.row[0], 0);
  const std::int16_t* const first = plan.coefficient;
  exchange(std::max_element(first, first + plan.count), plan.count - 1);
  if (plan.count % 2 == 0) exchange(std::min_element(first, first + plan.count - 1), plan.count - 2);
  return true;
}

/// All pairs but the last add up in 16 bits, and so does the last by itself.
bool PairsFitWords(const VerticalTaps& plan) {
  const int others = (plan.count - 1) / 2 * 2;
  return ByteProductsFitWords(plan.coefficient, others) &&
         ByteProductsFitWords(plan.coefficient + others, plan.count - others);
}

}  // namespace

VerticalTaps PlanVerticalTaps(const std::int16_t* coefficients, std::int32_t taps, const ByteRowShape& shape) {
  const VerticalTaps plan = CollectTaps(coefficients, taps);
  VerticalTaps pairs = plan;
  pairs.inBytes = shape.vectorBytes != 0 && plan.count > 1 && ArrangeInPairs(pairs) && PairsFitWords(pairs);
  return pairs.inBytes ? pairs : plan;
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
