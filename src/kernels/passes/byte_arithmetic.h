// Arithmetic on vectors of bytes that the byte forms share. Sums of products are 16-bit lanes, in the two halves that
// Join puts together.
#pragma once

#include "simd/simd.h"

namespace vidproc::VIDPROC_TARGET {
namespace {

inline U8 AbsoluteDifference(U8 a, U8 b) { return Subtract(Max(a, b), Min(a, b)); }

#if VIDPROC_HAS_BYTE_OPS

/// table[index] in the index's tile, 0 for indices of 16 and more: those reach 128, for which the shuffle gives 0.
inline U8 LookUpBelow16(U8 table, U8 index) { return ShuffleTiles(table, AddSaturate(index, SplatU8(0x70))); }

/// Two signed byte coefficients in every 16-bit lane.
inline U8 SplatPair(int first, int second) { return AsU8(SplatI16((first & 0xFF) | second << 8)); }

inline Halves Add(Halves a, Halves b) { return {Add(a.low, b.low), Add(a.high, b.high)}; }
inline Halves AddSaturate(Halves a, Halves b) { return {AddSaturate(a.low, b.low), AddSaturate(a.high, b.high)}; }

/// a0 * b0 + a1 * b1 of every byte, a unsigned, b signed.
inline Halves MultiplyZipped(U8 a0, U8 a1, U8 b0, U8 b1) {
  return {MultiplyPairs(U8{ZipLow8(a0.raw, a1.raw)}, U8{ZipLow8(b0.raw, b1.raw)}),
          MultiplyPairs(U8{ZipHigh8(a0.raw, a1.raw)}, U8{ZipHigh8(b0.raw, b1.raw)})};
}

/// The same with one pair of coefficients for all.
inline Halves MultiplyZipped(U8 a0, U8 a1, U8 pair) {
  return {MultiplyPairs(U8{ZipLow8(a0.raw, a1.raw)}, pair), MultiplyPairs(U8{ZipHigh8(a0.raw, a1.raw)}, pair)};
}

/// (sum + half) >> kShift.
template <int kShift>
inline I16 RoundShift(I16 sum) {
  return MultiplyRound(sum, SplatI16(1 << (15 - kShift)));
}

/// The same to bytes with saturation: unsigned ones, signed ones.
template <int kShift>
inline U8 RoundToBytes(Halves sum) {
  return Join(RoundShift<kShift>(sum.low), RoundShift<kShift>(sum.high));
}
template <int kShift>
inline U8 RoundToSignedBytes(Halves sum) {
  return JoinSigned(RoundShift<kShift>(sum.low), RoundShift<kShift>(sum.high));
}

#endif

}  // namespace
}  // namespace vidproc::VIDPROC_TARGET
