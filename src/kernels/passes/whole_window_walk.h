// Walks the vectors of a grid along a row whose windows each hold all samples of their results, so that they are loaded
// once. A vector's pattern has shuffle indices and coefficients for each pair of taps: those of each result pair so
// that few pairs will do.
#pragma once

#include "kernels/passes/byte_row_scaler.h"
#include "kernels/row_jobs.h"

namespace vidproc::VIDPROC_TARGET {
namespace {

template <int kPairs>
struct WholePattern {
  static constexpr int kBytes = 2 * kPairs * kVectorBytes;
  explicit WholePattern(const std::uint8_t* memory) {
    for (int p = 0; p < kPairs; ++p) {
      indices[p] = LoadU8(memory + 2 * p * kVectorBytes);
      coefficients[p] = LoadU8(memory + (2 * p + 1) * kVectorBytes);
    }
  }
  [[gnu::always_inline]] I16 Sum(U8 windows) const {
    I16 sum;
    for (int p = 0; p < kPairs; ++p) {
      const I16 products = MultiplyPairs(ShuffleWindows(windows, indices[p]), coefficients[p]);
      sum = p == 0 ? products : p + 1 < kPairs ? Add(sum, products) : AddSaturate(sum, products);
    }
    return sum;
  }
  U8 indices[kPairs];
  U8 coefficients[kPairs];
};

template <int kPairs>
class WholeWindowWalk {
 public:
  WholeWindowWalk(const ByteRowGrid& grid, const HorizontalRowJob& job)
      : grid(grid), row(job.in), factor(SplatI16(1 << (15 - job.plan->shift))) {}

  /// The next vector of results.
  [[gnu::always_inline]] I16 Next() {
    using Pattern = WholePattern<kPairs>;
    const I16 sum =
        Pattern(grid.patterns + vector * Pattern::kBytes).Sum(LoadWindows(row, grid.windows + vector * kWindows));
    if (++vector == grid.vectors) {
      vector = 0;
      row += grid.advance;
    }
    return MultiplyRound(sum, factor);
  }

 private:
  const ByteRowGrid grid;
  const std::uint8_t* row;
  I16 factor;
  std::ptrdiff_t vector = 0;
};

/// The same with one pattern for all vectors.
template <int kPairs>
class UniformWholeWindowWalk {
 public:
  UniformWholeWindowWalk(const ByteRowGrid& grid, const HorizontalRowJob& job)
      : row(job.in),
        advance(grid.advance),
        windows(grid.windows),
        pattern(grid.patterns),
        factor(SplatI16(1 << (15 - job.plan->shift))) {}

  [[gnu::always_inline]] I16 Next() {
    const I16 sum = pattern.Sum(LoadWindows(row, windows.offsets));
    row += advance;
    return MultiplyRound(sum, factor);
  }

 private:
  const std::uint8_t* row;
  std::ptrdiff_t advance;
  SpreadWindows windows;
  WholePattern<kPairs> pattern;
  I16 factor;
};

}  // namespace
}  // namespace vidproc::VIDPROC_TARGET
