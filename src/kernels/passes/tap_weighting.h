// How much each tap weighs: policies of the vertical and the horizontal pass. From one vector of samples per tap, Weigh
// makes one vector of weights per tap; the passes multiply and add.
//
// Difference weight curve: a difference d leaves the weight w(d) = 256 - min(min(d * d, 256) << shift, 256), computed
// in 16-bit lanes. kept: the square wraps, so that some large differences regain weight; so does the shift, which from
// 8 on gives all differences of 16 and more their full weight back.
#pragma once

#include "kernels/passes/motion_test.h"
#include "simd/simd.h"

namespace vidproc::VIDPROC_TARGET {
namespace {

/// The weight that a difference takes away: 256 - w(d).
inline I16 LostWeight(I16 difference, int shift) {
  const I16 limit = SplatI16(256);
  const I16 square = MinUnsigned(MultiplyLow(difference, difference), limit);
  return MinUnsigned(ShiftLeft(square, shift), limit);
}

/// Every tap weighs its coefficient.
struct PlainTaps {
  static constexpr bool kSkipsZeroTaps = true;
  template <class Value>
  PlainTaps WithPrevious(const Value* /*previous*/) const {
    return {};
  }

  template <int kTaps>
  void Weigh(const I16 (&)[kTaps], const I16 (&coefficient)[kTaps], std::ptrdiff_t /*offset*/,
             I16 (&weight)[kTaps]) const {
    for (int t = 0; t < kTaps; ++t) weight[t] = coefficient[t];
  }
};

/// Taps lose weight as their sample differs from the one under the centre tap, which takes up what they lose. No tap
/// loses weight where the motion test finds the centre sample moving.
template <class MotionTest>
struct AdaptiveTaps {
  static constexpr bool kSkipsZeroTaps = false;
  int shift;
  MotionTest motionTest;
  template <class Value>
  AdaptiveTaps WithPrevious(const Value* previous) const {
    return {shift, motionTest.WithPrevious(previous)};
  }

  template <int kTaps>
  void Weigh(const I16 (&sample)[kTaps], const I16 (&coefficient)[kTaps], std::ptrdiff_t offset,
             I16 (&weight)[kTaps]) const {
    constexpr int kCentre = kTaps / 2 - 1;
    const auto still = motionTest.FindStill(sample[kCentre], offset);
    I16 sum = SplatI16(0);
    for (int t = 0; t < kTaps; ++t) {
      if (t == kCentre) continue;
      const I16 lost = still.OrZero(LostWeight(SubtractSaturate(sample[t], sample[kCentre]), shift));
      const I16 left = Subtract(SplatI16(256), lost);
      weight[t] = ShiftRight<8>(Add(MultiplyLow(left, coefficient[t]), SplatI16(128)));
      sum = Add(sum, weight[t]);
    }
    weight[kCentre] = Subtract(SplatI16(128), sum);
  }
};

}  // namespace
}  // namespace vidproc::VIDPROC_TARGET
