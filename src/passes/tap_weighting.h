// What a tap counts: policies of the vertical and the horizontal pass. A policy's At(...) gives the weights for one
// vector of samples; the passes multiply and add.
//
// Difference weight curve: for a difference d, q = min(d * d, 256), q = min(q << shift, 256), w = 256 - q, in 16-bit
// lanes. kept: the square and the shift wrap, so that some large differences regain weight, and from a shift of 8 on all
// of 16 and more.
#pragma once

#include "simd/simd.h"

namespace vidproc::VIDPROC_TARGET {
namespace {

/// min(min(difference^2, 256) << shift, 256), the weight that a difference takes away.
inline I16 LostWeight(I16 difference, int shift) {
  const I16 limit = SplatI16(256);
  const I16 square = MinUnsigned(MultiplyLow(difference, difference), limit);
  return MinUnsigned(ShiftLeft(square, shift), limit);
}

/// Every tap counts with its coefficient.
struct PlainTaps {
  static constexpr bool kSkipsZeroTaps = true;
  PlainTaps ForRow(const std::uint8_t* /*remembered*/) const { return *this; }
  PlainTaps ForColumn(const std::int16_t* /*remembered*/) const { return *this; }

  template <int kTaps>
  void Weigh(const I16 (&)[kTaps], const I16 (&coefficient)[kTaps], int /*offset*/, I16 (&weight)[kTaps]) const {
    for (int t = 0; t < kTaps; ++t) weight[t] = coefficient[t];
  }
};

/// Taps lose weight as their sample differs from the one under the centre tap, which takes up what they lose.
template <class Gate>
struct AdaptiveTaps {
  static constexpr bool kSkipsZeroTaps = false;
  int shift;
  Gate gate;
  AdaptiveTaps ForRow(const std::uint8_t* remembered) const { return {shift, gate.ForRow(remembered)}; }
  AdaptiveTaps ForColumn(const std::int16_t* remembered) const { return {shift, gate.ForColumn(remembered)}; }

  template <int kTaps>
  void Weigh(const I16 (&sample)[kTaps], const I16 (&coefficient)[kTaps], int offset, I16 (&weight)[kTaps]) const {
    constexpr int kCentre = kTaps / 2 - 1;
    const auto open = gate.Open(sample[kCentre], offset);
    I16 sum = SplatI16(0);
    for (int t = 0; t < kTaps; ++t) {
      if (t == kCentre) continue;
      const I16 lost = open.Pass(LostWeight(SubtractSaturate(sample[t], sample[kCentre]), shift));
      const I16 kept = Subtract(SplatI16(256), lost);
      weight[t] = ShiftRight<8>(Add(MultiplyLow(kept, coefficient[t]), SplatI16(128)));
      sum = Add(sum, weight[t]);
    }
    weight[kCentre] = Subtract(SplatI16(128), sum);
  }
};

/// Edges are preserved everywhere.
struct AlwaysOpen {
  AlwaysOpen ForRow(const std::uint8_t*) const { return {}; }
  AlwaysOpen ForColumn(const std::int16_t*) const { return {}; }
  AlwaysOpen Open(I16 /*centre*/, int /*offset*/) const { return {}; }
  I16 Pass(I16 lost) const { return lost; }
};

/// Edges are preserved only where the centre sample is near the remembered one: moving samples get the full low-pass.
/// kept: the square wraps, so that differences of 182 and more test still again.
struct OpenWhereStill {
  struct Mask {
    I16 still;
    I16 Pass(I16 lost) const { return And(lost, still); }
  };
  const std::uint8_t* row;
  const std::int16_t* column;
  OpenWhereStill ForRow(const std::uint8_t* remembered) const { return {remembered, nullptr}; }
  OpenWhereStill ForColumn(const std::int16_t* remembered) const { return {nullptr, remembered}; }
  Mask Open(I16 centre, int offset) const {
    const I16 remembered = row != nullptr ? LoadWiden(row + offset) : LoadI16(column + offset);
    const I16 change = Subtract(remembered, centre);
    return {Less(MultiplyLow(change, change), SplatI16(256))};
  }
};

}  // namespace
}  // namespace vidproc::VIDPROC_TARGET
