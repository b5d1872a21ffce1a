// AVX2: 256-bit vectors, two tiles.
#pragma once

#include <immintrin.h>

namespace vidproc::VIDPROC_TARGET {
using Raw = __m256i;
}

#include "simd/vector_types.h"

namespace vidproc::VIDPROC_TARGET {
namespace {

constexpr bool kHasByteShuffle = true;

inline Raw LoadRaw(const void* p) { return _mm256_loadu_si256(static_cast<const __m256i*>(p)); }
inline void StoreRaw(void* p, Raw a) { _mm256_storeu_si256(static_cast<__m256i*>(p), a); }
inline __m128i Load128(const void* p) { return _mm_loadu_si128(static_cast<const __m128i*>(p)); }
inline void Store128(void* p, __m128i a) { _mm_storeu_si128(static_cast<__m128i*>(p), a); }
inline Raw Combine(__m128i low, __m128i high) { return _mm256_inserti128_si256(_mm256_castsi128_si256(low), high, 1); }

inline I16 LoadI16(const std::int16_t* p) { return {LoadRaw(p)}; }
inline U8 LoadU8(const std::uint8_t* p) { return {LoadRaw(p)}; }
inline void Store(std::int16_t* p, I16 a) { StoreRaw(p, a.raw); }
inline void Store(std::uint8_t* p, U8 a) { StoreRaw(p, a.raw); }
inline void Store(std::int32_t* p, I32 a) { StoreRaw(p, a.raw); }
inline I16 LoadWiden(const std::uint8_t* p) { return {_mm256_cvtepu8_epi16(Load128(p))}; }
inline void StoreNarrow(std::uint8_t* p, I16 a) {
  const Raw packed = _mm256_permute4x64_epi64(_mm256_packus_epi16(a.raw, a.raw), 0x08);
  Store128(p, _mm256_castsi256_si128(packed));
}
inline U8 LoadTilesU8(const std::uint8_t* p, std::ptrdiff_t stride) {
  return {Combine(Load128(p), Load128(p + stride))};
}
inline I16 LoadTilesI16(const std::int16_t* p, std::ptrdiff_t stride) {
  return {Combine(Load128(p), Load128(p + stride))};
}
inline void StoreTiles(std::uint8_t* p, std::ptrdiff_t stride, U8 a) {
  Store128(p, _mm256_castsi256_si128(a.raw));
  Store128(p + stride, _mm256_extracti128_si256(a.raw, 1));
}
inline U8 LoadHalves(const std::uint8_t* low, const std::uint8_t* high) {
  return {Combine(Load128(low), Load128(high))};
}
inline U8 LoadRepeated(const std::uint8_t* p) { return {_mm256_broadcastsi128_si256(Load128(p))}; }
inline void StoreTileSum(std::int32_t* p, I32 a) {
  Store128(p, _mm_add_epi32(_mm256_castsi256_si128(a.raw), _mm256_extracti128_si256(a.raw, 1)));
}

inline I16 SplatI16(int value) { return {_mm256_set1_epi16(static_cast<short>(value))}; }
inline U8 SplatU8(int value) { return {_mm256_set1_epi8(static_cast<char>(value))}; }

inline I16 Add(I16 a, I16 b) { return {_mm256_add_epi16(a.raw, b.raw)}; }
inline I16 Subtract(I16 a, I16 b) { return {_mm256_sub_epi16(a.raw, b.raw)}; }
inline I16 AddSaturate(I16 a, I16 b) { return {_mm256_adds_epi16(a.raw, b.raw)}; }
inline I16 SubtractSaturate(I16 a, I16 b) { return {_mm256_subs_epi16(a.raw, b.raw)}; }
inline I16 MultiplyLow(I16 a, I16 b) { return {_mm256_mullo_epi16(a.raw, b.raw)}; }
inline I32 MultiplyAdd(I16 a, I16 b) { return {_mm256_madd_epi16(a.raw, b.raw)}; }
inline I32 Add(I32 a, I32 b) { return {_mm256_add_epi32(a.raw, b.raw)}; }
inline I32 SplatI32(int value) { return {_mm256_set1_epi32(value)}; }
template <int kCount>
inline I32 ShiftRight(I32 a) {
  return {_mm256_srai_epi32(a.raw, kCount)};
}
inline I16 JoinSigned(I32 low, I32 high) { return {_mm256_packs_epi32(low.raw, high.raw)}; }
inline I16 Absolute(I16 a) { return {_mm256_abs_epi16(a.raw)}; }
inline I16 MinUnsigned(I16 a, I16 b) { return {_mm256_min_epu16(a.raw, b.raw)}; }
inline I16 Less(I16 a, I16 b) { return {_mm256_cmpgt_epi16(b.raw, a.raw)}; }
template <int kCount>
inline I16 ShiftRight(I16 a) {
  return {_mm256_srai_epi16(a.raw, kCount)};
}
template <int kCount>
inline I16 ShiftRightLogical(I16 a) {
  return {_mm256_srli_epi16(a.raw, kCount)};
}
/// Counts of 16 and more give 0; negative ones are not allowed.
inline I16 ShiftLeft(I16 a, int count) { return {_mm256_sll_epi16(a.raw, _mm_cvtsi32_si128(count))}; }

inline I16 And(I16 a, I16 b) { return {_mm256_and_si256(a.raw, b.raw)}; }
inline U8 And(U8 a, U8 b) { return {_mm256_and_si256(a.raw, b.raw)}; }
inline U8 Or(U8 a, U8 b) { return {_mm256_or_si256(a.raw, b.raw)}; }
inline U8 Xor(U8 a, U8 b) { return {_mm256_xor_si256(a.raw, b.raw)}; }
inline U8 Subtract(U8 a, U8 b) { return {_mm256_sub_epi8(a.raw, b.raw)}; }
inline U8 AddSaturateSigned(U8 a, U8 b) { return {_mm256_adds_epi8(a.raw, b.raw)}; }
inline U8 SubtractSaturateSigned(U8 a, U8 b) { return {_mm256_subs_epi8(a.raw, b.raw)}; }
inline U8 AbsoluteSigned(U8 a) { return {_mm256_abs_epi8(a.raw)}; }
inline U8 Average(U8 a, U8 b) { return {_mm256_avg_epu8(a.raw, b.raw)}; }
inline U8 Max(U8 a, U8 b) { return {_mm256_max_epu8(a.raw, b.raw)}; }
inline U8 Min(U8 a, U8 b) { return {_mm256_min_epu8(a.raw, b.raw)}; }

inline Raw ZipLow8(Raw a, Raw b) { return _mm256_unpacklo_epi8(a, b); }
inline Raw ZipHigh8(Raw a, Raw b) { return _mm256_unpackhi_epi8(a, b); }
inline Raw ZipLow16(Raw a, Raw b) { return _mm256_unpacklo_epi16(a, b); }
inline Raw ZipHigh16(Raw a, Raw b) { return _mm256_unpackhi_epi16(a, b); }
inline Raw ZipLow32(Raw a, Raw b) { return _mm256_unpacklo_epi32(a, b); }
inline Raw ZipHigh32(Raw a, Raw b) { return _mm256_unpackhi_epi32(a, b); }
inline Raw ZipLow64(Raw a, Raw b) { return _mm256_unpacklo_epi64(a, b); }
inline Raw ZipHigh64(Raw a, Raw b) { return _mm256_unpackhi_epi64(a, b); }
inline U8 Join(I16 low, I16 high) { return {_mm256_packus_epi16(low.raw, high.raw)}; }

inline U8 AndNot(U8 mask, U8 a) { return {_mm256_andnot_si256(mask.raw, a.raw)}; }
inline U8 Add(U8 a, U8 b) { return {_mm256_add_epi8(a.raw, b.raw)}; }
inline U8 AddSaturate(U8 a, U8 b) { return {_mm256_adds_epu8(a.raw, b.raw)}; }
inline U8 Equal(U8 a, U8 b) { return {_mm256_cmpeq_epi8(a.raw, b.raw)}; }
inline U8 JoinInOrder(I16 first, I16 second) {
  return {_mm256_permute4x64_epi64(_mm256_packus_epi16(first.raw, second.raw), 0xD8)};
}
inline U8 JoinSigned(I16 low, I16 high) { return {_mm256_packs_epi16(low.raw, high.raw)}; }
inline U8 LookUpBelow16(U8 table, U8 index) {
  return {_mm256_shuffle_epi8(table.raw, _mm256_adds_epu8(index.raw, _mm256_set1_epi8(0x70)))};
}
constexpr int kWindowBytes = 16;
inline U8 LoadTilesAt(const std::uint8_t* row, const std::int32_t* offsets) {
  return {Combine(Load128(row + offsets[0]), Load128(row + offsets[1]))};
}
inline U8 LoadWindows(const std::uint8_t* row, const std::int32_t* offsets) { return LoadTilesAt(row, offsets); }
inline U8 ShuffleWindows(U8 windows, U8 index) { return {_mm256_shuffle_epi8(windows.raw, index.raw)}; }
inline U8 ShuffleTiles(U8 tiles, U8 index) { return ShuffleWindows(tiles, index); }
inline I16 MultiplyPairs(U8 a, U8 b) { return {_mm256_maddubs_epi16(a.raw, b.raw)}; }
inline I16 MultiplyRound(I16 a, I16 b) { return {_mm256_mulhrs_epi16(a.raw, b.raw)}; }

}  // namespace
}  // namespace vidproc::VIDPROC_TARGET
