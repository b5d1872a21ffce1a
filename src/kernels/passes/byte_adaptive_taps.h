// Edge-preserving taps on bytes, for banks whose outer taps are not negative and add up to at most the whole. Then the
// result is the centre sample plus a weighted mean of differences,
//
//   v = s_c + ((sum of a_t (s_t - s_c) + 64) >> 7)
//
// A tap has weight only where its difference is below 16, so that weights, differences and results all fit bytes, and
// the weight of a difference can be looked up in a table of 16.
#pragma once

#include "compiler/compiler.h"
#include "kernels/denoise_taps.h"
#include "kernels/passes/byte_arithmetic.h"
#include "kernels/passes/motion_test.h"
#include "kernels/passes/vector_walk.h"

namespace vidproc::VIDPROC_TARGET {
namespace {

/// Differences from a centre as signed bytes. Large ones saturate, at a value that has no weight.
class DifferenceFrom {
 public:
  explicit DifferenceFrom(U8 centre) : signedCentre(Xor(centre, SplatU8(kSign))) {}
  U8 operator()(U8 sample) const { return SubtractSaturateSigned(Xor(sample, SplatU8(kSign)), signedCentre); }

 private:
  static constexpr int kSign = 0x80;
  U8 signedCentre;
};

inline U8 WeightOf(U8 difference, U8 table) { return LookUpBelow16(table, AbsoluteSigned(difference)); }

/// A phase's taps in registers.
template <int kOuter>
class ByteTaps {
 public:
  explicit ByteTaps(const DenoiseTaps& outer) {
    for (int k = 0; k < kOuter; ++k) table[k] = LoadRepeated(outer.table[k]);
    for (int k = 0; k < kOuter; k += 2) pair[k / 2] = SplatPair(outer.coefficient[k], outer.coefficient[k + 1]);
    pair[kOuter / 2] = SplatPair(outer.centreCoefficient, 0);
  }

  /// Edges preserved where the motion test finds the centre still.
  template <class MotionTest>
  U8 Filter(U8 centre, const U8 (&sample)[kOuter + 1], const MotionTest& motionTest, std::ptrdiff_t offset) const {
    return motionTest.FindStill(centre, offset).Select(Adapt(centre, sample), Smooth(centre, sample));
  }

 private:
  /// Edges preserved.
  U8 Adapt(U8 centre, const U8 (&sample)[kOuter + 1]) const {
    const DifferenceFrom differenceFrom(centre);
    Halves sum{SplatI16(0), SplatI16(0)};
    for (int k = 0; k < kOuter; k += 2) {
      const U8 first = differenceFrom(sample[k]), second = differenceFrom(sample[k + 1]);
      sum = Add(sum, MultiplyPairsOf(WeightOf(first, table[k]), WeightOf(second, table[k + 1]), first, second));
    }
    return Add(centre, RoundToSignedBytes<7>(sum));
  }

  /// The full low-pass, for samples that have moved.
  U8 Smooth(U8 centre, const U8 (&sample)[kOuter + 1]) const {
    if constexpr (kOuter == 0) return centre;
    Halves sum = MultiplyPairsOf(centre, SplatU8(0), pair[kOuter / 2]);
    for (int k = 0; k < kOuter; k += 2) sum = Add(sum, MultiplyPairsOf(sample[k], sample[k + 1], pair[k / 2]));
    return RoundToBytes<7>(sum);
  }

  U8 table[kOuter + 1];
  U8 pair[kOuter / 2 + 1];
};

/// Blends values with their history where differences of 16 and more have no weight: what the others add or take away
/// is looked up.
struct ByteBlend {
  U8 rise;
  U8 fall;

  explicit ByteBlend(const HistorySteps& steps) : rise(LoadRepeated(steps.rise)), fall(LoadRepeated(steps.fall)) {}

  U8 Blend(U8 history, U8 value) const {
    const U8 larger = Max(history, value);
    const U8 up = LookUpBelow16(rise, Subtract(larger, value));
    const U8 down = LookUpBelow16(fall, Subtract(larger, history));
    return Subtract(Add(value, up), down);
  }
};

/// Calls filter with a phase's taps as ByteTaps of at least their number.
template <class Filter>
inline void WithByteTaps(const DenoiseTaps& outer, const Filter& filter) {
  if (outer.count == 0) return filter(ByteTaps<0>(outer));
  if (outer.count <= 2) return filter(ByteTaps<2>(outer));
  if (outer.count <= 4) return filter(ByteTaps<4>(outer));
  if (outer.count <= 6) return filter(ByteTaps<6>(outer));
  if (outer.count <= 8) return filter(ByteTaps<8>(outer));
  if (outer.count <= 10) return filter(ByteTaps<10>(outer));
  if (outer.count <= 12) return filter(ByteTaps<12>(outer));
  filter(ByteTaps<kMaxTaps>(outer));
}

/// A row between rows: `centre` is the one under the centre tap, `ahead` one to fetch.
template <int kOuter, class MotionTest>
inline void FilterRowAdaptively(const ByteTaps<kOuter>& taps, const MotionTest& rowTest,
                                const std::uint8_t* const* rows, const std::uint8_t* centre, const std::uint8_t* ahead,
                                int bytes, std::uint8_t* out) {
  WalkSteps(bytes, kVectorBytes, [&](std::ptrdiff_t b) {
    Prefetch(ahead + b);
    U8 sample[kOuter + 1];
    for (int k = 0; k < kOuter; ++k) sample[k] = LoadU8(rows[k] + b);
    Store(out + b, taps.Filter(LoadU8(centre + b), sample, rowTest, b));
  });
}

}  // namespace
}  // namespace vidproc::VIDPROC_TARGET
