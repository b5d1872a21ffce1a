// Operations made of a set's own: the same source for every width. simd/simd.h explains the lane orders.
#pragma once

namespace vidproc::VIDPROC_TARGET {
namespace {

/// Two vectors of 16-bit lanes in split order, one lane per byte of a vector.
struct Halves {
  I16 low;
  I16 high;
};

inline Halves Split(U8 a) {
  const Raw zero = SplatU8(0).raw;
  return {{ZipLow8(a.raw, zero)}, {ZipHigh8(a.raw, zero)}};
}
/// As many 16-bit values as a vector has bytes.
inline Halves LoadSplit(const std::int16_t* p) { return {LoadTilesI16(p, 16), LoadTilesI16(p + 8, 16)}; }

inline Halves Add(Halves a, Halves b) { return {Add(a.low, b.low), Add(a.high, b.high)}; }
inline Halves AddSaturate(Halves a, Halves b) { return {AddSaturate(a.low, b.low), AddSaturate(a.high, b.high)}; }

/// a0 * b0 + a1 * b1 of every byte, a unsigned, b signed; the sums saturate.
inline Halves MultiplyPairsOf(U8 a0, U8 a1, U8 b0, U8 b1) {
  return {MultiplyPairs({ZipLow8(a0.raw, a1.raw)}, {ZipLow8(b0.raw, b1.raw)}),
          MultiplyPairs({ZipHigh8(a0.raw, a1.raw)}, {ZipHigh8(b0.raw, b1.raw)})};
}
/// The same with one pair of coefficients for all, from SplatPair.
inline Halves MultiplyPairsOf(U8 a0, U8 a1, U8 pair) {
  return {MultiplyPairs({ZipLow8(a0.raw, a1.raw)}, pair), MultiplyPairs({ZipHigh8(a0.raw, a1.raw)}, pair)};
}
/// Two signed byte coefficients in every 16-bit lane.
inline U8 SplatPair(int first, int second) { return AsU8(SplatI16((first & 0xFF) | second << 8)); }

/// Sums in 32 bits, one per byte of a vector.
struct WideSums {
  I32 quarter[4];
};
inline WideSums SplatWideSums(int value) {
  const I32 sum = SplatI32(value);
  return {{sum, sum, sum, sum}};
}
/// Two signed 16-bit coefficients in every 32-bit lane.
inline I16 SplatWordPair(int first, int second) { return AsI16(SplatI32((first & 0xFFFF) | second * 65536)); }
/// sums + a0 * b0 + a1 * b1 of every byte, b from SplatWordPair.
inline WideSums AddProducts(const WideSums& sums, U8 a0, U8 a1, I16 pair) {
  const Halves first = Split(a0);
  const Halves second = Split(a1);
  return {{Add(sums.quarter[0], MultiplyAdd({ZipLow16(first.low.raw, second.low.raw)}, pair)),
           Add(sums.quarter[1], MultiplyAdd({ZipHigh16(first.low.raw, second.low.raw)}, pair)),
           Add(sums.quarter[2], MultiplyAdd({ZipLow16(first.high.raw, second.high.raw)}, pair)),
           Add(sums.quarter[3], MultiplyAdd({ZipHigh16(first.high.raw, second.high.raw)}, pair))}};
}
/// sums >> kShift, saturated to bytes.
template <int kShift>
inline U8 JoinShifted(const WideSums& sums) {
  return Join(JoinSigned(ShiftRight<kShift>(sums.quarter[0]), ShiftRight<kShift>(sums.quarter[1])),
              JoinSigned(ShiftRight<kShift>(sums.quarter[2]), ShiftRight<kShift>(sums.quarter[3])));
}

/// (a + half) >> kShift without a wrap or saturation of the sum, half = 1 << (kShift - 1): MultiplyRound by
/// 2^(15 - kShift) is
///
///   (a * 2^(15 - kShift) + 2^14) >> 15  =  floor((a + half) * 2^(15 - kShift) / 2^15)  =  floor((a + half) /
///   2^kShift).
///
/// A saturating addition gives less for a above 32767 - half.
template <int kShift>
inline I16 RoundShift(I16 a) {
  return MultiplyRound(a, SplatI16(1 << (15 - kShift)));
}
/// (half - a) >> kShift, by the same proof with the other sign.
template <int kShift>
inline I16 RoundShiftNegated(I16 a) {
  return MultiplyRound(a, SplatI16(-(1 << (15 - kShift))));
}

/// The bytes at even and at odd places, as lanes in order, and values of 0..255 back to these places.
inline I16 EvenBytes(U8 a) { return And(AsI16(a), SplatI16(0xFF)); }
inline I16 OddBytes(U8 a) { return ShiftRightLogical<8>(AsI16(a)); }
inline U8 Interleave(I16 even, I16 odd) { return Or(AsU8(even), AsU8(ShiftLeft(odd, 8))); }

/// Lanes in order, saturated to 0..255 and interleaved: even, odd, even, odd ... Packing and interleaving by tiles undo
/// each other's order.
struct TwoVectors {
  U8 first;
  U8 second;
};
inline TwoVectors JoinInterleaved(I16 even0, I16 even1, I16 odd0, I16 odd1) {
  const Raw even = Join(even0, even1).raw;
  const Raw odd = Join(odd0, odd1).raw;
  return {{ZipLow8(even, odd)}, {ZipHigh8(even, odd)}};
}

/// In every tile four sums: of its lanes of a, of b, of c and of d.
inline I32 SumLanes(I32 a, I32 b, I32 c, I32 d) {
  const I32 ab = Add(I32{ZipLow32(a.raw, b.raw)}, I32{ZipHigh32(a.raw, b.raw)});
  const I32 cd = Add(I32{ZipLow32(c.raw, d.raw)}, I32{ZipHigh32(c.raw, d.raw)});
  return Add(I32{ZipLow64(ab.raw, cd.raw)}, I32{ZipHigh64(ab.raw, cd.raw)});
}
/// Four sums: of all lanes of a, of b, of c, and of c once more.
inline void StoreSums(std::int32_t* sums, I32 a, I32 b, I32 c) { StoreTileSum(sums, SumLanes(a, b, c, c)); }

}  // namespace
}  // namespace vidproc::VIDPROC_TARGET
