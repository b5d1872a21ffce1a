// The horizontal pass of a single row, in the form that its plan has found exact.
#include <cstring>

#include "compiler/compiler.h"
#include "kernels/kernel_table.h"
#include "kernels/passes/byte_row_scaler.h"
#include "kernels/passes/vector_walk.h"
#include "kernels/passes/whole_window_walk.h"
#include "kernels/row_jobs.h"
#include "simd/simd.h"

namespace vidproc::VIDPROC_TARGET {
namespace {

void ScaleOutputByOutput(const HorizontalRowJob& job, int first) {
  const HorizontalRowPlan& plan = *job.plan;
  std::uint8_t* out = job.out + first * plan.step;
  for (int k = first; k < plan.outputs; ++k) {
    const PhasePosition& position = plan.positions[k];
    const std::int16_t* coefficients = plan.coefficients + position.phase * kMaxTaps;
    for (int component = 0; component < plan.step; ++component) {
      const std::uint8_t* samples = job.in + position.source * plan.step + component;
      int sum = 1 << (plan.shift - 1);
      for (int t = 0; t < plan.taps; ++t) sum += coefficients[t] * samples[t * plan.step];
      *out++ = static_cast<std::uint8_t>(Clamp(sum >> plan.shift, 0, 255));
    }
  }
}

/// Eight samples of one component: 0, or 1 for Cr.
template <int kStep>
I16 LoadSamples(const std::uint8_t* row, int component) {
  if constexpr (kStep == 1) return LoadWiden(row);
  const U8 pairs = LoadU8(row);
  return component == 0 ? EvenBytes(pairs) : OddBytes(pairs);
}

/// Result by result as well, but with the samples under its taps side by side in lanes. For sets of one tile.
template <int kStep, int kShift>
void ScaleByLanes(const HorizontalRowJob& job) {
  const HorizontalRowPlan& plan = *job.plan;
  const I32 half = SplatI32(1 << (kShift - 1));
  const auto productsOf = [&](int result) {
    const PhasePosition& position = plan.positions[result / kStep];
    const std::uint8_t* const samples = job.in + position.source * kStep;
    const std::int16_t* const coefficients = plan.coefficients + position.phase * kMaxTaps;
    const I32 products = MultiplyAdd(LoadSamples<kStep>(samples, result % kStep), LoadI16(coefficients));
    if (plan.taps <= 8) return products;
    return Add(products,
               MultiplyAdd(LoadSamples<kStep>(samples + 8 * kStep, result % kStep), LoadI16(coefficients + 8)));
  };
  const auto fourFrom = [&](int result) {
    const I32 sums =
        SumLanes(productsOf(result), productsOf(result + 1), productsOf(result + 2), productsOf(result + 3));
    return ShiftRight<kShift>(Add(sums, half));
  };
  int b = 0;
  for (; b + kVectorBytes <= plan.outputs * kStep; b += kVectorBytes) {
    const I16 low = JoinSigned(fourFrom(b), fourFrom(b + 4));
    Store(job.out + b, Join(low, JoinSigned(fourFrom(b + 8), fourFrom(b + 12))));
  }
  ScaleOutputByOutput(job, b / kStep);
}

template <int kStep>
void ScaleByLanes(const HorizontalRowJob& job) {
  job.plan->shift == 6 ? ScaleByLanes<kStep, 6>(job) : ScaleByLanes<kStep, 7>(job);
}

void ScaleSamePhase(const HorizontalRowJob& job) {
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
  std::memcpy(out + b, end, static_cast<std::size_t>(bytes - b));
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

/// Walks the vectors of a grid of octets along a row.
template <int kOctets>
class OctetWalk {
 public:
  OctetWalk(const ByteRowGrid& grid, const HorizontalRowJob& job)
      : at{grid, job.in}, octetBytes(8 * job.plan->step), factor(SplatI16(1 << (15 - job.plan->shift))) {}

  /// The next vector of results.
  VIDPROC_ALWAYS_INLINE I16 Next() {
    I16 sums[4];
    for (int i = 0; i < 4; ++i) sums[i] = SumOctets(i);
    const I16 sum = AddNeighbours(AddNeighbours(sums[0], sums[1]), AddNeighbours(sums[2], sums[3]));
    at.Step();
    return MultiplyRound(sum, factor);
  }

 private:
  static constexpr int kTiles = kVectorBytes / 16;

  /// Two results in each tile, each in four partial sums.
  VIDPROC_ALWAYS_INLINE I16 SumOctets(int part) const {
    constexpr int kPatternBytes = kVectorBytes * (1 + kOctets);
    const std::uint8_t* const pattern = at.Pattern(4 * kPatternBytes) + part * kPatternBytes;
    const std::int32_t* const windows = at.Windows(4 * kTiles) + part * kTiles;
    I16 sum;
    for (int octet = 0; octet < kOctets; ++octet) {
      const U8 samples = ShuffleTiles(LoadTilesAt(at.row + octet * octetBytes, windows), LoadU8(pattern));
      const I16 products = MultiplyPairs(samples, LoadU8(pattern + (1 + octet) * kVectorBytes));
      sum = octet == 0 ? products : Add(sum, products);
    }
    return sum;
  }

  GridPosition at;
  std::ptrdiff_t octetBytes;
  I16 factor;
};

template <int kOctets>
void ScaleOctets(const HorizontalRowJob& job) {
  const HorizontalRowPlan& plan = *job.plan;
  WalkRow(plan, OctetWalk<kOctets>(plan.grid, job), OctetWalk<kOctets>(plan.end, job), job.out);
}

void ScaleByOctets(const HorizontalRowJob& job) { job.plan->octets == 1 ? ScaleOctets<1>(job) : ScaleOctets<2>(job); }

template <int kPairs, int kPlaces>
void ScaleWholeWindows(const HorizontalRowJob& job) {
  const HorizontalRowPlan& plan = *job.plan;
  const WholeWindowWalk<kPairs, kPlaces> end(plan.end, job);
  if (plan.grid.vectors == 1)
    return WalkRow(plan, UniformWholeWindowWalk<kPairs, kPlaces>(plan.grid, job), end, job.out);
  WalkRow(plan, WholeWindowWalk<kPairs, kPlaces>(plan.grid, job), end, job.out);
}

template <int kPairs = 1>
void ScaleByWholeWindows(const HorizontalRowJob& job) {
  if constexpr (2 * kPairs < kMaxVerticalTaps) {
    if (job.plan->pairs > kPairs) return ScaleByWholeWindows<kPairs + 1>(job);
  }
  job.plan->secondWindow == 0 ? ScaleWholeWindows<kPairs, 1>(job) : ScaleWholeWindows<kPairs, 2>(job);
}

template <int kPairs = 1>
void ScaleByPairs(const HorizontalRowJob& job) {
  if constexpr (kPairs < kMaxRowTapPairs) {
    if (job.plan->pairs > kPairs) return ScaleByPairs<kPairs + 1>(job);
  }
  ScalePairs<kPairs>(job);
}

[[maybe_unused]] void ScaleByGrids(const HorizontalRowJob& job) {
  switch (job.plan->form) {
    case HorizontalForm::kWholeWindows:
      return ScaleByWholeWindows(job);
    case HorizontalForm::kOctets:
      return ScaleByOctets(job);
    default:
      return ScaleByPairs(job);
  }
}

}  // namespace

void ScaleRow(const HorizontalRowJob& job) {
  if (job.plan->form == HorizontalForm::kSamePhase) return ScaleSamePhase(job);
  if constexpr (kHasByteShuffle) {
    if (job.plan->form != HorizontalForm::kGeneral) return ScaleByGrids(job);
  } else if constexpr (kHasVectors) {
    return job.plan->step == 1 ? ScaleByLanes<1>(job) : ScaleByLanes<2>(job);
  }
  ScaleOutputByOutput(job, 0);
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
