// The horizontal pass of a single row, in the form that its plan has found exact.
#include "kernels/kernel_table.h"
#include "kernels/passes/byte_row_scaler.h"
#include "kernels/passes/vector_walk.h"
#include "kernels/row_jobs.h"
#include "simd/simd.h"

namespace vidproc::VIDPROC_TARGET {
namespace {

void ScaleOutputByOutput(const HorizontalRowJob& job) {
  const HorizontalRowPlan& plan = *job.plan;
  std::uint8_t* out = job.out;
  for (int k = 0; k < plan.outputs; ++k) {
    const RowPosition& position = plan.positions[k];
    const std::int16_t* coefficients = plan.coefficients + position.phase * kMaxTaps;
    for (int component = 0; component < plan.step; ++component) {
      const std::uint8_t* samples = job.in + position.source * plan.step + component;
      int sum = 1 << (plan.shift - 1);
      for (int t = 0; t < plan.taps; ++t) sum += coefficients[t] * samples[t * plan.step];
      *out++ = static_cast<std::uint8_t>(Clamp(sum >> plan.shift, 0, 255));
    }
  }
}

void FilterShiftedRows(const HorizontalRowJob& job) {
  const HorizontalRowPlan& plan = *job.plan;
  VerticalRowJob rows{&plan.shifted, {}, {}, plan.shift, plan.outputs * plan.step, job.out};
  for (int t = 0; t < plan.shifted.count; ++t) rows.rows[t] = job.in + plan.shifted.row[t] * plan.step;
  FilterRowsVertically(rows);
}

/// kVectorBytes bytes of the row at a time.
template <class Walk, class EndWalk>
void WalkRow(const HorizontalRowPlan& plan, Walk walk, EndWalk endWalk, std::uint8_t* out) {
  const int bytes = plan.outputs * plan.step;
  const auto next = [](auto& vectors) {
    const I16 first = vectors.Next();
    return JoinInOrder(first, vectors.Next());
  };
  int b = 0;
  for (; b + kVectorBytes <= bytes; b += kVectorBytes) Store(out + b, next(walk));
  if (b == bytes) return;
  std::uint8_t end[kVectorBytes];
  Store(end, next(endWalk));
  __builtin_memcpy(out + b, end, static_cast<std::size_t>(bytes - b));
}

template <int kPairs>
void ScalePairs(const HorizontalRowJob& job) {
  const HorizontalRowPlan& plan = *job.plan;
  using Pairs = ListedPairs<kPairs>;
  const Pairs pairs(plan.pairOffset, plan.shift);
  const auto walkBy = [&](auto walk) {
    WalkRow(plan, walk, GridWalk<kPairs, Pairs>(plan.end, job.in, pairs), job.out);
  };
  if (plan.form == HorizontalForm::kPatterns) {
    walkBy(GridWalk<kPairs, Pairs>(plan.grid, job.in, pairs));
  } else if (plan.form == HorizontalForm::kAdjacentPairs) {
    walkBy(UniformGridWalk<kPairs, Pairs, PairsInPlace>(plan.grid, job.in, pairs));
  } else if (kWindows > 1 && AreAdjacent(plan.grid.windows)) {
    walkBy(UniformGridWalk<kPairs, Pairs, AdjacentWindows>(plan.grid, job.in, pairs));
  } else {
    walkBy(UniformGridWalk<kPairs, Pairs, SpreadWindows>(plan.grid, job.in, pairs));
  }
}

template <int kPairs = 1>
void ScaleByPairs(const HorizontalRowJob& job) {
  if constexpr (kPairs < kMaxRowTapPairs) {
    if (job.plan->pairs > kPairs) return ScaleByPairs<kPairs + 1>(job);
  }
  ScalePairs<kPairs>(job);
}

}  // namespace

void ScaleRow(const HorizontalRowJob& job) {
  switch (job.plan->form) {
    case HorizontalForm::kGeneral:
      return ScaleOutputByOutput(job);
    case HorizontalForm::kSamePhase:
      return FilterShiftedRows(job);
    default:
      if constexpr (kHasByteShuffle) return ScaleByPairs(job);
      return ScaleOutputByOutput(job);
  }
}

void RepeatRowEdges(std::uint8_t* row, std::int32_t bytes, std::int32_t step) {
  const int last = step - 1;  // of a sample
  const auto repeat = [](std::uint8_t* to, std::uint8_t first, std::uint8_t second) {
    for (int i = 0; i < kRowEdge; i += 2) {
      to[i] = first;
      to[i + 1] = second;
    }
  };
  repeat(row - kRowEdge, row[0], row[last]);
  repeat(row + bytes, row[bytes - step], row[bytes - 1]);
}

}  // namespace vidproc::VIDPROC_TARGET
