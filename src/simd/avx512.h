// AVX-512BW (and VBMI): 512-bit vectors, four tiles. With VIDPROC_EMULATE_WIDE the intrinsics are emulated, so that
// machines without them can run the tests of this set.
#pragma once

#ifdef VIDPROC_EMULATE_WIDE
#include "simd/avx512_emulated.h"
#else
#include <immintrin.h>
#endif

namespace vidproc::VIDPROC_TARGET {
using Raw = __m512i;
}

#include "simd/vector_types.h"

namespace vidproc::VIDPROC_TARGET {
namespace {

constexpr bool kHasByteShuffle = true;

inline Raw LoadRaw(const void* p) { return _mm512_loadu_si512(p); }
inline void StoreRaw(void* p, Raw a) { _mm512_storeu_si512(p, a); }
inline __m128i Load128(const void* p) { return _mm_loadu_si128(static_cast<const __m128i*>(p)); }
inline void Store128(void* p, __m128i a) { _mm_storeu_si128(static_cast<__m128i*>(p), a); }
inline __m256i Load256(const void* p) { return _mm256_loadu_si256(static_cast<const __m256i*>(p)); }
inline Raw Combine(__m128i a, __m128i b, __m128i c, __m128i d) {
  const Raw ab = _mm512_inserti32x4(_mm512_castsi128_si512(a), b, 1);
  return _mm512_inserti32x4(_mm512_inserti32x4(ab, c, 2), d, 3);
}

inline I16 LoadI16(const std::int16_t* p) { return {LoadRaw(p)}; }
inline U8 LoadU8(const std::uint8_t* p) { return {LoadRaw(p)}; }
inline void Store(std::int16_t* p, I16 a) { StoreRaw(p, a.raw); }
inline void Store(std::uint8_t* p, U8 a) { StoreRaw(p, a.raw); }
inline void Store(std::int32_t* p, I32 a) { StoreRaw(p, a.raw); }
inline I16 LoadWiden(const std::uint8_t* p) { return {_mm512_cvtepu8_epi16(Load256(p))}; }
inline void StoreNarrow(std::uint8_t* p, I16 a) {
  const Raw positive = _mm512_max_epi16(a.raw, _mm512_setzero_si512());
  _mm256_storeu_si256(reinterpret_cast<__m256i*>(p), _mm512_cvtusepi16_epi8(positive));
}
inline U8 LoadTilesU8(const std::uint8_t* p, std::ptrdiff_t stride) {
  return {Combine(Load128(p), Load128(p + stride), Load128(p + 2 * stride), Load128(p + 3 * stride))};
}
inline I16 LoadTilesI16(const std::int16_t* p, std::ptrdiff_t stride) {
  return {Combine(Load128(p), Load128(p + stride), Load128(p + 2 * stride), Load128(p + 3 * stride))};
}
inline void StoreTiles(std::uint8_t* p, std::ptrdiff_t stride, U8 a) {
  Store128(p, _mm512_castsi512_si128(a.raw));
  Store128(p + stride, _mm512_extracti32x4_epi32(a.raw, 1));
  Store128(p + 2 * stride, _mm512_extracti32x4_epi32(a.raw, 2));
  Store128(p + 3 * stride, _mm512_extracti32x4_epi32(a.raw, 3));
}
inline U8 LoadHalves(const std::uint8_t* low, const std::uint8_t* high) {
  return {_mm512_inserti64x4(_mm512_castsi256_si512(Load256(low)), Load256(high), 1)};
}
inline U8 LoadRepeated(const std::uint8_t* p) { return {_mm512_broadcast_i32x4(Load128(p))}; }
inline void StoreTileSum(std::int32_t* p, I32 a) {
  const __m256i halves = _mm256_add_epi32(_mm512_castsi512_si256(a.raw), _mm512_extracti64x4_epi64(a.raw, 1));
  Store128(p, _mm_add_epi32(_mm256_castsi256_si128(halves), _mm256_extracti128_si256(halves, 1)));
}

inline I16 SplatI16(int value) { return {_mm512_set1_epi16(static_cast<short>(value))}; }
inline U8 SplatU8(int value) { return {_mm512_set1_epi8(static_cast<char>(value))}; }

inline I16 Add(I16 a, I16 b) { return {_mm512_add_epi16(a.raw, b.raw)}; }
inline I16 Subtract(I16 a, I16 b) { return {_mm512_sub_epi16(a.raw, b.raw)}; }
inline I16 AddSaturate(I16 a, I16 b) { return {_mm512_adds_epi16(a.raw, b.raw)}; }
inline I16 SubtractSaturate(I16 a, I16 b) { return {_mm512_subs_epi16(a.raw, b.raw)}; }
inline I16 MultiplyLow(I16 a, I16 b) { return {_mm512_mullo_epi16(a.raw, b.raw)}; }
inline I32 MultiplyAdd(I16 a, I16 b) { return {_mm512_madd_epi16(a.raw, b.raw)}; }
inline I32 Add(I32 a, I32 b) { return {_mm512_add_epi32(a.raw, b.raw)}; }
inline I32 SplatI32(int value) { return {_mm512_set1_epi32(value)}; }
template <int kCount>
inline I32 ShiftRight(I32 a) {
  return {_mm512_srai_epi32(a.raw, kCount)};
}
inline I16 JoinSigned(I32 low, I32 high) { return {_mm512_packs_epi32(low.raw, high.raw)}; }
inline I16 Absolute(I16 a) { return {_mm512_abs_epi16(a.raw)}; }
inline I16 MinUnsigned(I16 a, I16 b) { return {_mm512_min_epu16(a.raw, b.raw)}; }
inline I16 Less(I16 a, I16 b) { return {_mm512_movm_epi16(_mm512_cmpgt_epi16_mask(b.raw, a.raw))}; }
template <int kCount>
inline I16 ShiftRight(I16 a) {
  return {_mm512_srai_epi16(a.raw, kCount)};
}
template <int kCount>
inline I16 ShiftRightLogical(I16 a) {
  return {_mm512_srli_epi16(a.raw, kCount)};
}
/// Counts of 16 and more give 0; negative ones are not allowed.
inline I16 ShiftLeft(I16 a, int count) { return {_mm512_sll_epi16(a.raw, _mm_cvtsi32_si128(count))}; }

inline I16 And(I16 a, I16 b) { return {_mm512_and_si512(a.raw, b.raw)}; }
inline U8 And(U8 a, U8 b) { return {_mm512_and_si512(a.raw, b.raw)}; }
inline U8 Or(U8 a, U8 b) { return {_mm512_or_si512(a.raw, b.raw)}; }
inline U8 Xor(U8 a, U8 b) { return {_mm512_xor_si512(a.raw, b.raw)}; }
inline U8 Subtract(U8 a, U8 b) { return {_mm512_sub_epi8(a.raw, b.raw)}; }
inline U8 AddSaturateSigned(U8 a, U8 b) { return {_mm512_adds_epi8(a.raw, b.raw)}; }
inline U8 SubtractSaturateSigned(U8 a, U8 b) { return {_mm512_subs_epi8(a.raw, b.raw)}; }
inline U8 AbsoluteSigned(U8 a) { return {_mm512_abs_epi8(a.raw)}; }
inline U8 Average(U8 a, U8 b) { return {_mm512_avg_epu8(a.raw, b.raw)}; }
inline U8 Max(U8 a, U8 b) { return {_mm512_max_epu8(a.raw, b.raw)}; }
inline U8 Min(U8 a, U8 b) { return {_mm512_min_epu8(a.raw, b.raw)}; }

inline Raw ZipLow8(Raw a, Raw b) { return _mm512_unpacklo_epi8(a, b); }
inline Raw ZipHigh8(Raw a, Raw b) { return _mm512_unpackhi_epi8(a, b); }
inline Raw ZipLow16(Raw a, Raw b) { return _mm512_unpacklo_epi16(a, b); }
inline Raw ZipHigh16(Raw a, Raw b) { return _mm512_unpackhi_epi16(a, b); }
inline Raw ZipLow32(Raw a, Raw b) { return _mm512_unpacklo_epi32(a, b); }
inline Raw ZipHigh32(Raw a, Raw b) { return _mm512_unpackhi_epi32(a, b); }
inline Raw ZipLow64(Raw a, Raw b) { return _mm512_unpacklo_epi64(a, b); }
inline Raw ZipHigh64(Raw a, Raw b) { return _mm512_unpackhi_epi64(a, b); }
inline U8 Join(I16 low, I16 high) { return {_mm512_packus_epi16(low.raw, high.raw)}; }

inline U8 AndNot(U8 mask, U8 a) { return {_mm512_andnot_si512(mask.raw, a.raw)}; }
inline U8 Add(U8 a, U8 b) { return {_mm512_add_epi8(a.raw, b.raw)}; }
inline U8 AddSaturate(U8 a, U8 b) { return {_mm512_adds_epu8(a.raw, b.raw)}; }
inline U8 Equal(U8 a, U8 b) { return {_mm512_movm_epi8(_mm512_cmpeq_epi8_mask(a.raw, b.raw))}; }
inline U8 JoinInOrder(I16 first, I16 second) {
  const Raw order = _mm512_set_epi64(7, 5, 3, 1, 6, 4, 2, 0);
  return {_mm512_permutexvar_epi64(order, _mm512_packus_epi16(first.raw, second.raw))};
}
inline U8 JoinSigned(I16 low, I16 high) { return {_mm512_packs_epi16(low.raw, high.raw)}; }
inline U8 LookUpBelow16(U8 table, U8 index) {
  return {_mm512_shuffle_epi8(table.raw, _mm512_adds_epu8(index.raw, _mm512_set1_epi8(0x70)))};
}
inline U8 LoadTilesAt(const std::uint8_t* row, const std::int32_t* offsets) {
  return {Combine(Load128(row + offsets[0]), Load128(row + offsets[1]), Load128(row + offsets[2]),
                  Load128(row + offsets[3]))};
}
inline U8 ShuffleTiles(U8 tiles, U8 index) { return {_mm512_shuffle_epi8(tiles.raw, index.raw)}; }
#ifdef VIDPROC_TARGET_avx512vbmi
constexpr int kWindowBytes = 64;
inline U8 LoadWindows(const std::uint8_t* row, const std::int32_t* offsets) { return LoadU8(row + offsets[0]); }
inline U8 ShuffleWindows(U8 windows, U8 index) { return {_mm512_permutexvar_epi8(index.raw, windows.raw)}; }
#else
constexpr int kWindowBytes = 16;
inline U8 LoadWindows(const std::uint8_t* row, const std::int32_t* offsets) { return LoadTilesAt(row, offsets); }
inline U8 ShuffleWindows(U8 windows, U8 index) { return ShuffleTiles(windows, index); }
#endif
inline I16 MultiplyPairs(U8 a, U8 b) { return {_mm512_maddubs_epi16(a.raw, b.raw)}; }
inline I16 MultiplyRound(I16 a, I16 b) { return {_mm512_mulhrs_epi16(a.raw, b.raw)}; }

}  // namespace
}  // namespace vidproc::VIDPROC_TARGET
