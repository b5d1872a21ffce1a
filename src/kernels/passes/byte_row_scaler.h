// The byte row scaler: horizontal pass along one row of bytes, without transposes. kernels/byte_row_plan.h explains its
// windows and patterns. Sums of products stay in 16 bits, but for the last addition, which saturates; only what stores
// them clamps them to bytes.
#pragma once

#include <cstring>

#include "compiler/compiler.h"
#include "kernels/byte_row_plan.h"
#include "kernels/passes/byte_arithmetic.h"

namespace vidproc::VIDPROC_TARGET {
namespace {

constexpr int kWindows = kVectorBytes / kWindowBytes;

/// The windows of a vector, from which Gather brings two samples to each result: each window anywhere in the row; side
/// by side; or side by side and with the samples already in their places.
struct SpreadWindows {
  explicit SpreadWindows(const std::int32_t* offsets) { std::memcpy(this->offsets, offsets, sizeof this->offsets); }
  U8 Gather(const std::uint8_t* row, U8 indices) const { return ShuffleWindows(LoadWindows(row, offsets), indices); }
  std::int32_t offsets[kWindows];
};
struct AdjacentWindows {
  explicit AdjacentWindows(const std::int32_t* offsets) : first(offsets[0]) {}
  U8 Gather(const std::uint8_t* row, U8 indices) const { return ShuffleWindows(LoadU8(row + first), indices); }
  std::ptrdiff_t first;
};
struct PairsInPlace {
  explicit PairsInPlace(const std::int32_t* offsets) : first(offsets[0]) {}
  U8 Gather(const std::uint8_t* row, U8 /*indices*/) const { return LoadU8(row + first); }
  std::ptrdiff_t first;
};

inline bool AreAdjacent(const std::int32_t* offsets) {
  for (int w = 1; w < kWindows; ++w) {
    if (offsets[w] != offsets[0] + w * kWindowBytes) return false;
  }
  return true;
}

/// What a vector of results is gathered and weighed by.
template <int kPairs>
struct Pattern {
  explicit Pattern(const std::uint8_t* memory) : indices(LoadU8(memory)) {
    for (int p = 0; p < kPairs; ++p) coefficients[p] = LoadU8(memory + (1 + p) * kVectorBytes);
  }
  U8 indices;
  U8 coefficients[kPairs];
};

/// Where the pairs of a result's taps lie, counted from the first one, and how their sums are rounded: one pair after
/// the other, with samples kSampleBytes apart (1 for luma, 2 for Cb and Cr); or as a plan lists them.
template <int kShift, int kSampleBytes>
struct PairsInOrder {
  static int Offset(int p) { return p * 2 * kSampleBytes; }
  static I16 Round(I16 sum) { return RoundShift<kShift>(sum); }
};
template <int kPairs>
struct ListedPairs {
  ListedPairs(const std::int32_t* list, int shift) : factor(SplatI16(1 << (15 - shift))) {
    for (int p = 0; p < kPairs; ++p) offsets[p] = list[p];
  }
  std::ptrdiff_t Offset(int p) const { return offsets[p]; }
  I16 Round(I16 sum) const { return MultiplyRound(sum, factor); }
  std::ptrdiff_t offsets[kPairs];
  I16 factor;
};

/// One vector of rounded sums.
template <int kPairs, class Pairs, class Windows>
VIDPROC_ALWAYS_INLINE I16 FilterWindows(const std::uint8_t* row, const Pairs& pairs, const Windows& windows,
                                        const Pattern<kPairs>& pattern) {
  I16 sum;
  for (int p = 0; p < kPairs; ++p) {
    const U8 samples = windows.Gather(row + pairs.Offset(p), pattern.indices);
    const I16 products = MultiplyPairs(samples, pattern.coefficients[p]);
    sum = p == 0 ? products : p + 1 < kPairs ? Add(sum, products) : AddSaturate(sum, products);
  }
  return pairs.Round(sum);
}

/// How far a walk along a row has come in a grid, whose patterns begin anew after its last vector.
struct GridPosition {
  const ByteRowGrid grid;
  const std::uint8_t* row;
  std::ptrdiff_t vector = 0;

  const std::int32_t* Windows(int perVector) const { return grid.windows + vector * perVector; }
  const std::uint8_t* Pattern(int bytes) const { return grid.patterns + vector * bytes; }
  void Step() {
    if (++vector < grid.vectors) return;
    vector = 0;
    row += grid.advance;
  }
};

/// Walks the vectors of a grid along a row; the patterns change from vector to vector.
template <int kPairs, class Pairs>
class GridWalk {
 public:
  GridWalk(const ByteRowGrid& grid, const std::uint8_t* row, const Pairs& pairs = {}) : at{grid, row}, pairs(pairs) {}

  /// The next vector of results.
  VIDPROC_ALWAYS_INLINE I16 Next() {
    const Pattern<kPairs> pattern(at.Pattern(kVectorBytes * (1 + kPairs)));
    const I16 result = FilterWindows(at.row, pairs, SpreadWindows(at.Windows(kWindows)), pattern);
    at.Step();
    return result;
  }

 private:
  GridPosition at;
  Pairs pairs;
};

/// The same with one pattern for all vectors, which then stays in registers: ratios like 2:1, 3:2 and 1:2.
template <int kPairs, class Pairs, class Windows>
class UniformGridWalk {
 public:
  UniformGridWalk(const ByteRowGrid& grid, const std::uint8_t* row, const Pairs& pairs = {})
      : row(row), advance(grid.advance), pairs(pairs), windows(grid.windows), pattern(grid.patterns) {}

  VIDPROC_ALWAYS_INLINE I16 Next() {
    const I16 result = FilterWindows(row, pairs, windows, pattern);
    row += advance;
    return result;
  }

 private:
  const std::uint8_t* row;
  std::ptrdiff_t advance;
  Pairs pairs;
  Windows windows;
  Pattern<kPairs> pattern;
};

/// The kinds of walks, for WithGridWalk.
template <int kPairs>
struct AnyGrid {
  template <int kShift, int kSampleBytes>
  using Walk = GridWalk<kPairs, PairsInOrder<kShift, kSampleBytes>>;
};
template <int kPairs, class Windows>
struct UniformGrid {
  template <int kShift, int kSampleBytes>
  using Walk = UniformGridWalk<kPairs, PairsInOrder<kShift, kSampleBytes>, Windows>;
};

template <int kPairs, class Scale, class... Grids>
inline void WithGridWalkOf(const Scale& scale, const Grids&... grids) {
  if (((grids.vectors != 1) || ...)) return scale(AnyGrid<kPairs>{});
  if (kWindows > 1 && (AreAdjacent(grids.windows) && ...)) return scale(UniformGrid<kPairs, AdjacentWindows>{});
  scale(UniformGrid<kPairs, SpreadWindows>{});
}

/// Calls scale with the kind of walk that suits all of the grids; its Walk<kShift, kSampleBytes> is the walk.
template <int kMostPairs, int kPairs = 1, class Scale, class... Grids>
inline void WithGridWalk(int tapPairs, const Scale& scale, const Grids&... grids) {
  if constexpr (kPairs < kMostPairs) {
    if (tapPairs > kPairs) return WithGridWalk<kMostPairs, kPairs + 1>(tapPairs, scale, grids...);
  }
  WithGridWalkOf<kPairs>(scale, grids...);
}

}  // namespace
}  // namespace vidproc::VIDPROC_TARGET
