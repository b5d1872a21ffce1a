// Arithmetic on vectors of bytes that the byte forms share.
#pragma once

#include "simd/simd.h"

namespace vidproc::VIDPROC_TARGET {
namespace {

inline U8 AbsoluteDifference(U8 a, U8 b) { return Subtract(Max(a, b), Min(a, b)); }

/// Unsigned bytes plus signed ones, saturated: adding 128 modulo 256 turns the unsigned bytes into signed ones, whose
/// saturating addition clamps as wanted.
inline U8 AddSignedBytes(U8 a, U8 b) {
  const U8 sign = SplatU8(0x80);
  return Xor(AddSaturateSigned(Xor(a, sign), b), sign);
}

/// Sums of neighbouring lanes, with saturation: in each tile those of a, then those of b.
inline I16 AddNeighbours(I16 a, I16 b) {
  const I16 one = SplatI16(1);
  return JoinSigned(MultiplyAdd(a, one), MultiplyAdd(b, one));
}

/// Rounded and shifted sums, saturated to unsigned and to signed bytes.
template <int kShift>
inline U8 RoundToBytes(Halves sum) {
  return Join(RoundShift<kShift>(sum.low), RoundShift<kShift>(sum.high));
}
template <int kShift>
inline U8 RoundToSignedBytes(Halves sum) {
  return JoinSigned(RoundShift<kShift>(sum.low), RoundShift<kShift>(sum.high));
}

}  // namespace
}  // namespace vidproc::VIDPROC_TARGET
