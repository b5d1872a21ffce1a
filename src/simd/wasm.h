// The vectors of WebAssembly: 128 bits, one tile.
#pragma once

#include <wasm_simd128.h>

namespace vidproc::VIDPROC_TARGET {
using Raw = v128_t;
}

#include "simd/vector_types.h"

namespace vidproc::VIDPROC_TARGET {
namespace {

inline I16 LoadI16(const std::int16_t* p) { return {wasm_v128_load(p)}; }
inline U8 LoadU8(const std::uint8_t* p) { return {wasm_v128_load(p)}; }
inline void Store(std::int16_t* p, I16 a) { wasm_v128_store(p, a.raw); }
inline void Store(std::uint8_t* p, U8 a) { wasm_v128_store(p, a.raw); }
inline void Store(std::int32_t* p, I32 a) { wasm_v128_store(p, a.raw); }
inline I16 LoadWiden(const std::uint8_t* p) { return {wasm_u16x8_load8x8(p)}; }
inline void StoreNarrow(std::uint8_t* p, I16 a) { wasm_v128_store64_lane(p, wasm_u8x16_narrow_i16x8(a.raw, a.raw), 0); }
inline U8 LoadHalves(const std::uint8_t* low, const std::uint8_t* high) {
  return {wasm_v128_load64_lane(high, wasm_v128_load64_zero(low), 1)};
}

inline I16 SplatI16(int value) { return {wasm_i16x8_splat(static_cast<std::int16_t>(value))}; }
inline U8 SplatU8(int value) { return {wasm_i8x16_splat(static_cast<std::int8_t>(value))}; }
inline I32 SplatI32(int value) { return {wasm_i32x4_splat(value)}; }

inline I16 Add(I16 a, I16 b) { return {wasm_i16x8_add(a.raw, b.raw)}; }
inline I16 Subtract(I16 a, I16 b) { return {wasm_i16x8_sub(a.raw, b.raw)}; }
inline I16 AddSaturate(I16 a, I16 b) { return {wasm_i16x8_add_sat(a.raw, b.raw)}; }
inline I16 SubtractSaturate(I16 a, I16 b) { return {wasm_i16x8_sub_sat(a.raw, b.raw)}; }
inline I16 MultiplyLow(I16 a, I16 b) { return {wasm_i16x8_mul(a.raw, b.raw)}; }
inline I32 MultiplyAdd(I16 a, I16 b) { return {wasm_i32x4_dot_i16x8(a.raw, b.raw)}; }
inline I16 MultiplyRound(I16 a, I16 b) { return {wasm_i16x8_q15mulr_sat(a.raw, b.raw)}; }
inline I32 Add(I32 a, I32 b) { return {wasm_i32x4_add(a.raw, b.raw)}; }
template <int kCount>
inline I32 ShiftRight(I32 a) {
  return {wasm_i32x4_shr(a.raw, kCount)};
}
inline I16 JoinSigned(I32 low, I32 high) { return {wasm_i16x8_narrow_i32x4(low.raw, high.raw)}; }
inline I16 MinUnsigned(I16 a, I16 b) { return {wasm_u16x8_min(a.raw, b.raw)}; }
inline I16 Absolute(I16 a) { return {wasm_i16x8_abs(a.raw)}; }
inline I16 Less(I16 a, I16 b) { return {wasm_i16x8_lt(a.raw, b.raw)}; }
template <int kCount>
inline I16 ShiftRight(I16 a) {
  return {wasm_i16x8_shr(a.raw, kCount)};
}
template <int kCount>
inline I16 ShiftRightLogical(I16 a) {
  return {wasm_u16x8_shr(a.raw, kCount)};
}
/// Counts of 16 and more give 0; negative ones are not allowed. The instruction takes them modulo 16.
inline I16 ShiftLeft(I16 a, int count) {
  return {count < 16 ? wasm_i16x8_shl(a.raw, static_cast<std::uint32_t>(count)) : wasm_i16x8_const_splat(0)};
}

inline I16 And(I16 a, I16 b) { return {wasm_v128_and(a.raw, b.raw)}; }
inline U8 And(U8 a, U8 b) { return {wasm_v128_and(a.raw, b.raw)}; }
inline U8 Or(U8 a, U8 b) { return {wasm_v128_or(a.raw, b.raw)}; }
inline U8 Xor(U8 a, U8 b) { return {wasm_v128_xor(a.raw, b.raw)}; }
inline U8 AndNot(U8 mask, U8 a) { return {wasm_v128_andnot(a.raw, mask.raw)}; }
inline U8 Add(U8 a, U8 b) { return {wasm_i8x16_add(a.raw, b.raw)}; }
inline U8 Subtract(U8 a, U8 b) { return {wasm_i8x16_sub(a.raw, b.raw)}; }
inline U8 AddSaturate(U8 a, U8 b) { return {wasm_u8x16_add_sat(a.raw, b.raw)}; }
inline U8 AddSaturateSigned(U8 a, U8 b) { return {wasm_i8x16_add_sat(a.raw, b.raw)}; }
inline U8 SubtractSaturateSigned(U8 a, U8 b) { return {wasm_i8x16_sub_sat(a.raw, b.raw)}; }
inline U8 AbsoluteSigned(U8 a) { return {wasm_i8x16_abs(a.raw)}; }
inline U8 Average(U8 a, U8 b) { return {wasm_u8x16_avgr(a.raw, b.raw)}; }
inline U8 Max(U8 a, U8 b) { return {wasm_u8x16_max(a.raw, b.raw)}; }
inline U8 Min(U8 a, U8 b) { return {wasm_u8x16_min(a.raw, b.raw)}; }
inline U8 Equal(U8 a, U8 b) { return {wasm_i8x16_eq(a.raw, b.raw)}; }

inline Raw ZipLow8(Raw a, Raw b) {
  return wasm_i8x16_shuffle(a, b, 0, 16, 1, 17, 2, 18, 3, 19, 4, 20, 5, 21, 6, 22, 7, 23);
}
inline Raw ZipHigh8(Raw a, Raw b) {
  return wasm_i8x16_shuffle(a, b, 8, 24, 9, 25, 10, 26, 11, 27, 12, 28, 13, 29, 14, 30, 15, 31);
}
inline Raw ZipLow16(Raw a, Raw b) { return wasm_i16x8_shuffle(a, b, 0, 8, 1, 9, 2, 10, 3, 11); }
inline Raw ZipHigh16(Raw a, Raw b) { return wasm_i16x8_shuffle(a, b, 4, 12, 5, 13, 6, 14, 7, 15); }
inline Raw ZipLow32(Raw a, Raw b) { return wasm_i32x4_shuffle(a, b, 0, 4, 1, 5); }
inline Raw ZipHigh32(Raw a, Raw b) { return wasm_i32x4_shuffle(a, b, 2, 6, 3, 7); }
inline Raw ZipLow64(Raw a, Raw b) { return wasm_i64x2_shuffle(a, b, 0, 2); }
inline Raw ZipHigh64(Raw a, Raw b) { return wasm_i64x2_shuffle(a, b, 1, 3); }
inline U8 Join(I16 low, I16 high) { return {wasm_u8x16_narrow_i16x8(low.raw, high.raw)}; }
inline U8 JoinSigned(I16 low, I16 high) { return {wasm_i8x16_narrow_i16x8(low.raw, high.raw)}; }

constexpr bool kHasByteShuffle = true;

inline U8 LookUpBelow16(U8 table, U8 index) { return {wasm_i8x16_swizzle(table.raw, index.raw)}; }
inline U8 ShuffleWindows(U8 windows, U8 index) { return LookUpBelow16(windows, index); }

}  // namespace
}  // namespace vidproc::VIDPROC_TARGET

#include "simd/byte_pairs.h"
#include "simd/one_tile.h"
