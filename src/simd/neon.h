// NEON of 64-bit little-endian ARM: 128-bit vectors, one tile.
#pragma once

#include <arm_neon.h>

#include <bit>

static_assert(std::endian::native == std::endian::little, "Bytes of a lane lie the other way round here.");

namespace vidproc::VIDPROC_TARGET {
using Raw = uint8x16_t;
}

#include "simd/vector_types.h"

namespace vidproc::VIDPROC_TARGET {
namespace {

inline int16x8_t Words(I16 a) { return vreinterpretq_s16_u8(a.raw); }
inline uint16x8_t UnsignedWords(I16 a) { return vreinterpretq_u16_u8(a.raw); }
inline I16 FromWords(int16x8_t a) { return {vreinterpretq_u8_s16(a)}; }
inline I16 FromWords(uint16x8_t a) { return {vreinterpretq_u8_u16(a)}; }

inline I16 LoadI16(const std::int16_t* p) { return FromWords(vld1q_s16(p)); }
inline U8 LoadU8(const std::uint8_t* p) { return {vld1q_u8(p)}; }
inline void Store(std::int16_t* p, I16 a) { vst1q_s16(p, Words(a)); }
inline void Store(std::uint8_t* p, U8 a) { vst1q_u8(p, a.raw); }
inline void Store(std::int32_t* p, I32 a) { vst1q_s32(p, vreinterpretq_s32_u8(a.raw)); }
inline I16 LoadWiden(const std::uint8_t* p) { return FromWords(vmovl_u8(vld1_u8(p))); }
inline void StoreNarrow(std::uint8_t* p, I16 a) { vst1_u8(p, vqmovun_s16(Words(a))); }
inline U8 LoadHalves(const std::uint8_t* low, const std::uint8_t* high) {
  return {vcombine_u8(vld1_u8(low), vld1_u8(high))};
}

inline I16 SplatI16(int value) { return FromWords(vdupq_n_s16(static_cast<std::int16_t>(value))); }
inline U8 SplatU8(int value) { return {vdupq_n_u8(static_cast<std::uint8_t>(value))}; }

inline I16 Add(I16 a, I16 b) { return FromWords(vaddq_s16(Words(a), Words(b))); }
inline I16 Subtract(I16 a, I16 b) { return FromWords(vsubq_s16(Words(a), Words(b))); }
inline I16 AddSaturate(I16 a, I16 b) { return FromWords(vqaddq_s16(Words(a), Words(b))); }
inline I16 SubtractSaturate(I16 a, I16 b) { return FromWords(vqsubq_s16(Words(a), Words(b))); }
inline I16 MultiplyLow(I16 a, I16 b) { return FromWords(vmulq_s16(Words(a), Words(b))); }
inline I32 MultiplyAdd(I16 a, I16 b) {
  const int32x4_t low = vmull_s16(vget_low_s16(Words(a)), vget_low_s16(Words(b)));
  const int32x4_t high = vmull_high_s16(Words(a), Words(b));
  return {vreinterpretq_u8_s32(vpaddq_s32(low, high))};
}
inline I32 Add(I32 a, I32 b) {
  return {vreinterpretq_u8_u32(vaddq_u32(vreinterpretq_u32_u8(a.raw), vreinterpretq_u32_u8(b.raw)))};
}
inline I32 SplatI32(int value) { return {vreinterpretq_u8_s32(vdupq_n_s32(value))}; }
template <int kCount>
inline I32 ShiftRight(I32 a) {
  return {vreinterpretq_u8_s32(vshrq_n_s32(vreinterpretq_s32_u8(a.raw), kCount))};
}
inline I16 JoinSigned(I32 low, I32 high) {
  return FromWords(vqmovn_high_s32(vqmovn_s32(vreinterpretq_s32_u8(low.raw)), vreinterpretq_s32_u8(high.raw)));
}
inline I16 MinUnsigned(I16 a, I16 b) { return FromWords(vminq_u16(UnsignedWords(a), UnsignedWords(b))); }
inline I16 Absolute(I16 a) { return FromWords(vabsq_s16(Words(a))); }
inline I16 Less(I16 a, I16 b) { return FromWords(vcltq_s16(Words(a), Words(b))); }
template <int kCount>
inline I16 ShiftRight(I16 a) {
  return FromWords(vshrq_n_s16(Words(a), kCount));
}
template <int kCount>
inline I16 ShiftRightLogical(I16 a) {
  return FromWords(vshrq_n_u16(UnsignedWords(a), kCount));
}
/// Counts of 16 and more give 0; negative ones are not allowed. The instruction reads a signed byte.
inline I16 ShiftLeft(I16 a, int count) {
  return FromWords(vshlq_u16(UnsignedWords(a), vdupq_n_s16(static_cast<std::int16_t>(count < 16 ? count : 16))));
}

inline I16 And(I16 a, I16 b) { return {vandq_u8(a.raw, b.raw)}; }
inline U8 And(U8 a, U8 b) { return {vandq_u8(a.raw, b.raw)}; }
inline U8 Or(U8 a, U8 b) { return {vorrq_u8(a.raw, b.raw)}; }
inline U8 Xor(U8 a, U8 b) { return {veorq_u8(a.raw, b.raw)}; }
inline U8 Subtract(U8 a, U8 b) { return {vsubq_u8(a.raw, b.raw)}; }
inline U8 AddSaturateSigned(U8 a, U8 b) {
  return {vreinterpretq_u8_s8(vqaddq_s8(vreinterpretq_s8_u8(a.raw), vreinterpretq_s8_u8(b.raw)))};
}
inline U8 SubtractSaturateSigned(U8 a, U8 b) {
  return {vreinterpretq_u8_s8(vqsubq_s8(vreinterpretq_s8_u8(a.raw), vreinterpretq_s8_u8(b.raw)))};
}
inline U8 AbsoluteSigned(U8 a) { return {vreinterpretq_u8_s8(vabsq_s8(vreinterpretq_s8_u8(a.raw)))}; }
inline U8 Average(U8 a, U8 b) { return {vrhaddq_u8(a.raw, b.raw)}; }
inline U8 Max(U8 a, U8 b) { return {vmaxq_u8(a.raw, b.raw)}; }
inline U8 Min(U8 a, U8 b) { return {vminq_u8(a.raw, b.raw)}; }

inline uint16x8_t In16(Raw a) { return vreinterpretq_u16_u8(a); }
inline uint32x4_t In32(Raw a) { return vreinterpretq_u32_u8(a); }
inline uint64x2_t In64(Raw a) { return vreinterpretq_u64_u8(a); }
inline Raw ZipLow8(Raw a, Raw b) { return vzip1q_u8(a, b); }
inline Raw ZipHigh8(Raw a, Raw b) { return vzip2q_u8(a, b); }
inline Raw ZipLow16(Raw a, Raw b) { return vreinterpretq_u8_u16(vzip1q_u16(In16(a), In16(b))); }
inline Raw ZipHigh16(Raw a, Raw b) { return vreinterpretq_u8_u16(vzip2q_u16(In16(a), In16(b))); }
inline Raw ZipLow32(Raw a, Raw b) { return vreinterpretq_u8_u32(vzip1q_u32(In32(a), In32(b))); }
inline Raw ZipHigh32(Raw a, Raw b) { return vreinterpretq_u8_u32(vzip2q_u32(In32(a), In32(b))); }
inline Raw ZipLow64(Raw a, Raw b) { return vreinterpretq_u8_u64(vzip1q_u64(In64(a), In64(b))); }
inline Raw ZipHigh64(Raw a, Raw b) { return vreinterpretq_u8_u64(vzip2q_u64(In64(a), In64(b))); }
inline U8 Join(I16 low, I16 high) { return {vqmovun_high_s16(vqmovun_s16(Words(low)), Words(high))}; }

inline U8 AndNot(U8 mask, U8 a) { return {vbicq_u8(a.raw, mask.raw)}; }
inline U8 Add(U8 a, U8 b) { return {vaddq_u8(a.raw, b.raw)}; }
inline U8 AddSaturate(U8 a, U8 b) { return {vqaddq_u8(a.raw, b.raw)}; }
inline U8 Equal(U8 a, U8 b) { return {vceqq_u8(a.raw, b.raw)}; }
inline U8 JoinSigned(I16 low, I16 high) {
  return {vreinterpretq_u8_s8(vqmovn_high_s16(vqmovn_s16(Words(low)), Words(high)))};
}
constexpr bool kHasByteShuffle = true;

inline U8 LookUpBelow16(U8 table, U8 index) { return {vqtbl1q_u8(table.raw, index.raw)}; }
inline U8 ShuffleWindows(U8 windows, U8 index) { return {vqtbl1q_u8(windows.raw, index.raw)}; }
inline I16 MultiplyRound(I16 a, I16 b) { return FromWords(vqrdmulhq_s16(Words(a), Words(b))); }

}  // namespace
}  // namespace vidproc::VIDPROC_TARGET

#include "simd/byte_pairs.h"
#include "simd/one_tile.h"
