#include "plan/row_taps.h"

#include <algorithm>
#include <utility>

#include "plan/exactness.h"

namespace vidproc {
namespace {

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

bool PairTapsOfPhase(const std::int16_t* coefficients, std::int32_t taps, VerticalTaps& plan) {
  if (taps - std::count(coefficients, coefficients + taps, 0) > kMaxVerticalTaps) return false;
  plan = CollectTaps(coefficients, taps);
  return ArrangeInPairs(plan) && PairsFitWords(plan);
}

VerticalTaps PlanVerticalTaps(const std::int16_t* coefficients, std::int32_t taps, const ByteRowShape& shape) {
  const VerticalTaps plan = CollectTaps(coefficients, taps);
  VerticalTaps pairs;
  if (shape.vectorBytes == 0 || plan.count == 1 || !PairTapsOfPhase(coefficients, taps, pairs)) return plan;
  pairs.inBytes = true;
  return pairs;
}

DenoiseTaps PlanDenoiseTaps(const std::int16_t* coefficients, std::int32_t taps, std::int32_t edge) {
  return FindDenoiseTaps(coefficients, taps, edge - 1);
}

HistoryBlend PlanHistoryBlend(std::int32_t strength, std::int32_t shift) {
  HistoryBlend blend{};
  FillWeightTable(strength, shift, blend.table);
  blend.weightFrom16 = WeightAt(16, strength, shift);
  blend.steps = FindHistorySteps(strength, shift);
  return blend;
}

}  // namespace vidproc
