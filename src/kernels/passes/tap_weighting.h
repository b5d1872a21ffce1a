// What a tap counts: policies of the vertical and the horizontal pass. A policy's Weigh gives the taps' weights for one
// vector of samples each; the passes multiply and add.
//
// Difference weight curve: for a difference d, q = min(d * d, 256), q = min(q << shift, 256), w = 256 - q, in 16-bit
// lanes. kept: the square and the shift wrap, so that some large differences regain weight, and from a shift of 8 on
// all of 16 and more.
#pragma once

#include "kernels/passes/byte_arithmetic.h"
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
  template <class Value>
  PlainTaps Against(const Value* /*remembered*/) const {
    return {};
  }

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
  template <class Value>
  AdaptiveTaps Against(const Value* remembered) const {
    return {shift, gate.Against(remembered)};
  }

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

/// Gates: where edges are preserved. One is held Against what the previous frame has left of a row or column; Open then
/// tells of a vector of centre samples, `offset` values into it, which of them count as still.

/// Edges are preserved everywhere.
struct AlwaysOpen {
  template <class Value>
  AlwaysOpen Against(const Value* /*remembered*/) const {
    return {};
  }
  template <class Vector>
  AlwaysOpen Open(Vector /*centre*/, int /*offset*/) const {
    return {};
  }
  I16 Pass(I16 lost) const { return lost; }
  U8 Choose(U8 adapted, U8 /*smoothed*/) const { return adapted; }
};

/// What moves gets the full low-pass: no tap loses weight.
struct OpenWords {
  I16 still;
  I16 Pass(I16 lost) const { return And(lost, still); }
};
#if VIDPROC_HAS_BYTE_OPS
/// The same as a choice between the two filtered values, of bytes.
struct OpenBytes {
  U8 still;
  U8 Choose(U8 adapted, U8 smoothed) const { return Or(And(still, adapted), AndNot(still, smoothed)); }
};
#endif

/// Difference below 16. kept: the square wraps, so that differences of 182 and more test still again.
inline I16 IsStill(I16 remembered, I16 centre) {
  const I16 change = Subtract(remembered, centre);
  return Less(MultiplyLow(change, change), SplatI16(256));
}

/// Against the previous source's bytes.
struct OpenWhereRowIsStill {
  const std::uint8_t* row = nullptr;
  OpenWhereRowIsStill Against(const std::uint8_t* remembered) const { return {remembered}; }
  OpenWords Open(I16 centre, int offset) const { return {IsStill(LoadWiden(row + offset), centre)}; }
#if VIDPROC_HAS_BYTE_OPS
  OpenBytes Open(U8 centre, int offset) const {
    const U8 beyond = Subtract(AbsoluteDifference(LoadU8(row + offset), centre), SplatU8(16));
    return {Equal(Max(beyond, SplatU8(182 - 16)), beyond)};
  }
#endif
};

/// Against the previous vertical result, 16-bit values of any size.
struct OpenWhereColumnIsStill {
  const std::int16_t* column = nullptr;
  OpenWhereColumnIsStill Against(const std::int16_t* remembered) const { return {remembered}; }
  OpenWords Open(I16 centre, int offset) const { return {IsStill(LoadI16(column + offset), centre)}; }
#if VIDPROC_HAS_BYTE_OPS
  OpenBytes Open(U8 centre, int offset) const {
    // As Split deals a tile's 16 bytes: 8 values to the one vector, 8 to the other.
    const auto remembered = [&](int first) { return AsI16(LoadTiles(column + offset + first, 2 * 16)); };
    const Halves now = Split(centre);
    return {JoinSigned(IsStill(remembered(0), now.low), IsStill(remembered(8), now.high))};
  }
#endif
};

}  // namespace
}  // namespace vidproc::VIDPROC_TARGET
