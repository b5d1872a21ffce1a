// Walks the vectors of a grid along a row whose windows hold all samples of their results, so that they are loaded
// once, or twice at places that lie a little apart. A vector's pattern has shuffle indices and coefficients for each
// pair of taps: those of each result pair so that few pairs will do.
#pragma once

#include "compiler/compiler.h"
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

  VIDPROC_ALWAYS_INLINE I16 Sum(U8 first, U8 second) const {
    I16 sum;
    for (int p = 0; p < kPairs; ++p) {
      const I16 products = MultiplyPairs(ShuffleWindows(p < kPairs / 2 ? first : second, indices[p]), coefficients[p]);
      sum = p == 0 ? products : p + 1 < kPairs ? Add(sum, products) : AddSaturate(sum, products);
    }
    return sum;
  }

  U8 indices[kPairs];
  U8 coefficients[kPairs];
};

/// The windows of a vector, and a vector of rounded sums from them.
template <int kPairs, int kPlaces>
struct WholeWindows {
  explicit WholeWindows(const HorizontalRowPlan& plan)
      : secondWindow(plan.secondWindow), factor(SplatI16(1 << (15 - plan.shift))) {}

  VIDPROC_ALWAYS_INLINE I16 Filter(const std::uint8_t* row, const std::int32_t* windows,
                                   const WholePattern<kPairs>& pattern) const {
    const U8 first = LoadWindows(row, windows);
    const U8 second = kPlaces == 1 ? first : LoadWindows(row + secondWindow, windows);
    return MultiplyRound(pattern.Sum(first, second), factor);
  }

  std::ptrdiff_t secondWindow;
  I16 factor;
};

template <int kPairs, int kPlaces>
class WholeWindowWalk {
 public:
  WholeWindowWalk(const ByteRowGrid& grid, const HorizontalRowJob& job) : at{grid, job.in}, windows(*job.plan) {}

  /// The next vector of results.
  VIDPROC_ALWAYS_INLINE I16 Next() {
    const WholePattern<kPairs> pattern(at.Pattern(WholePattern<kPairs>::kBytes));
    const I16 result = windows.Filter(at.row, at.Windows(kWindows), pattern);
    at.Step();
    return result;
  }

 private:
  GridPosition at;
  WholeWindows<kPairs, kPlaces> windows;
};

/// The same with one pattern for all vectors.
template <int kPairs, int kPlaces>
class UniformWholeWindowWalk {
 public:
  UniformWholeWindowWalk(const ByteRowGrid& grid, const HorizontalRowJob& job)
      : row(job.in), advance(grid.advance), windows(*job.plan), places(grid.windows), pattern(grid.patterns) {}

  VIDPROC_ALWAYS_INLINE I16 Next() {
    const I16 result = windows.Filter(row, places.offsets, pattern);
    row += advance;
    return result;
  }

 private:
  const std::uint8_t* row;
  std::ptrdiff_t advance;
  WholeWindows<kPairs, kPlaces> windows;
  SpreadWindows places;
  WholePattern<kPairs> pattern;
};

}  // namespace
}  // namespace vidproc::VIDPROC_TARGET
