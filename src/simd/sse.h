// SSE2 and SSE4.1: 128-bit vectors, one tile. SSE2 makes up the operations it lacks from others.
#pragma once

#ifdef VIDPROC_TARGET_sse41
#include <smmintrin.h>
#else
#include <emmintrin.h>
#endif

namespace vidproc::VIDPROC_TARGET {
using Raw = __m128i;
}

#include "simd/vector_types.h"

namespace vidproc::VIDPROC_TARGET {
namespace {

inline Raw LoadRaw(const void* p) { return _mm_loadu_si128(static_cast<const __m128i*>(p)); }
inline void StoreRaw(void* p, Raw a) { _mm_storeu_si128(static_cast<__m128i*>(p), a); }
inline Raw Load64(const void* p) { return _mm_loadl_epi64(static_cast<const __m128i*>(p)); }

inline I16 LoadI16(const std::int16_t* p) { return {LoadRaw(p)}; }
inline U8 LoadU8(const std::uint8_t* p) { return {LoadRaw(p)}; }
inline void Store(std::int16_t* p, I16 a) { StoreRaw(p, a.raw); }
inline void Store(std::uint8_t* p, U8 a) { StoreRaw(p, a.raw); }
inline void Store(std::int32_t* p, I32 a) { StoreRaw(p, a.raw); }
inline I16 LoadWiden(const std::uint8_t* p) { return {_mm_unpacklo_epi8(Load64(p), _mm_setzero_si128())}; }
inline void StoreNarrow(std::uint8_t* p, I16 a) {
  _mm_storel_epi64(reinterpret_cast<__m128i*>(p), _mm_packus_epi16(a.raw, a.raw));
}
inline U8 LoadHalves(const std::uint8_t* low, const std::uint8_t* high) {
  return {_mm_unpacklo_epi64(Load64(low), Load64(high))};
}

inline I16 SplatI16(int value) { return {_mm_set1_epi16(static_cast<short>(value))}; }
inline U8 SplatU8(int value) { return {_mm_set1_epi8(static_cast<char>(value))}; }

inline I16 Add(I16 a, I16 b) { return {_mm_add_epi16(a.raw, b.raw)}; }
inline I16 Subtract(I16 a, I16 b) { return {_mm_sub_epi16(a.raw, b.raw)}; }
inline I16 AddSaturate(I16 a, I16 b) { return {_mm_adds_epi16(a.raw, b.raw)}; }
inline I16 SubtractSaturate(I16 a, I16 b) { return {_mm_subs_epi16(a.raw, b.raw)}; }
inline I16 MultiplyLow(I16 a, I16 b) { return {_mm_mullo_epi16(a.raw, b.raw)}; }
inline I32 MultiplyAdd(I16 a, I16 b) { return {_mm_madd_epi16(a.raw, b.raw)}; }
inline I32 Add(I32 a, I32 b) { return {_mm_add_epi32(a.raw, b.raw)}; }
inline I32 SplatI32(int value) { return {_mm_set1_epi32(value)}; }
template <int kCount>
inline I32 ShiftRight(I32 a) {
  return {_mm_srai_epi32(a.raw, kCount)};
}
inline I16 JoinSigned(I32 low, I32 high) { return {_mm_packs_epi32(low.raw, high.raw)}; }
inline I16 Less(I16 a, I16 b) { return {_mm_cmplt_epi16(a.raw, b.raw)}; }
template <int kCount>
inline I16 ShiftRight(I16 a) {
  return {_mm_srai_epi16(a.raw, kCount)};
}
template <int kCount>
inline I16 ShiftRightLogical(I16 a) {
  return {_mm_srli_epi16(a.raw, kCount)};
}
/// Counts of 16 and more give 0; negative ones are not allowed.
inline I16 ShiftLeft(I16 a, int count) { return {_mm_sll_epi16(a.raw, _mm_cvtsi32_si128(count))}; }

inline I16 And(I16 a, I16 b) { return {_mm_and_si128(a.raw, b.raw)}; }
inline U8 And(U8 a, U8 b) { return {_mm_and_si128(a.raw, b.raw)}; }
inline U8 Or(U8 a, U8 b) { return {_mm_or_si128(a.raw, b.raw)}; }
inline U8 Xor(U8 a, U8 b) { return {_mm_xor_si128(a.raw, b.raw)}; }
inline U8 Subtract(U8 a, U8 b) { return {_mm_sub_epi8(a.raw, b.raw)}; }
inline U8 AddSaturateSigned(U8 a, U8 b) { return {_mm_adds_epi8(a.raw, b.raw)}; }
inline U8 SubtractSaturateSigned(U8 a, U8 b) { return {_mm_subs_epi8(a.raw, b.raw)}; }
inline U8 AbsoluteSigned(U8 a) { return {_mm_min_epu8(a.raw, _mm_sub_epi8(_mm_setzero_si128(), a.raw))}; }
inline U8 Average(U8 a, U8 b) { return {_mm_avg_epu8(a.raw, b.raw)}; }
inline U8 Max(U8 a, U8 b) { return {_mm_max_epu8(a.raw, b.raw)}; }
inline U8 Min(U8 a, U8 b) { return {_mm_min_epu8(a.raw, b.raw)}; }

inline Raw ZipLow8(Raw a, Raw b) { return _mm_unpacklo_epi8(a, b); }
inline Raw ZipHigh8(Raw a, Raw b) { return _mm_unpackhi_epi8(a, b); }
inline Raw ZipLow16(Raw a, Raw b) { return _mm_unpacklo_epi16(a, b); }
inline Raw ZipHigh16(Raw a, Raw b) { return _mm_unpackhi_epi16(a, b); }
inline Raw ZipLow32(Raw a, Raw b) { return _mm_unpacklo_epi32(a, b); }
inline Raw ZipHigh32(Raw a, Raw b) { return _mm_unpackhi_epi32(a, b); }
inline Raw ZipLow64(Raw a, Raw b) { return _mm_unpacklo_epi64(a, b); }
inline Raw ZipHigh64(Raw a, Raw b) { return _mm_unpackhi_epi64(a, b); }
inline U8 Join(I16 low, I16 high) { return {_mm_packus_epi16(low.raw, high.raw)}; }

inline U8 JoinSigned(I16 low, I16 high) { return {_mm_packs_epi16(low.raw, high.raw)}; }

inline U8 AndNot(U8 mask, U8 a) { return {_mm_andnot_si128(mask.raw, a.raw)}; }
inline U8 Add(U8 a, U8 b) { return {_mm_add_epi8(a.raw, b.raw)}; }
inline U8 AddSaturate(U8 a, U8 b) { return {_mm_adds_epu8(a.raw, b.raw)}; }
inline U8 Equal(U8 a, U8 b) { return {_mm_cmpeq_epi8(a.raw, b.raw)}; }

#ifdef VIDPROC_TARGET_sse41
constexpr bool kHasByteShuffle = true;

inline I16 MinUnsigned(I16 a, I16 b) { return {_mm_min_epu16(a.raw, b.raw)}; }
inline I16 Absolute(I16 a) { return {_mm_abs_epi16(a.raw)}; }
inline U8 LookUpBelow16(U8 table, U8 index) {
  return {_mm_shuffle_epi8(table.raw, _mm_adds_epu8(index.raw, _mm_set1_epi8(0x70)))};
}
inline U8 ShuffleWindows(U8 windows, U8 index) { return {_mm_shuffle_epi8(windows.raw, index.raw)}; }
inline I16 MultiplyPairs(U8 a, U8 b) { return {_mm_maddubs_epi16(a.raw, b.raw)}; }
inline I16 MultiplyRound(I16 a, I16 b) { return {_mm_mulhrs_epi16(a.raw, b.raw)}; }
#else
inline I16 MinUnsigned(I16 a, I16 b) { return {_mm_sub_epi16(a.raw, _mm_subs_epu16(a.raw, b.raw))}; }
inline I16 Absolute(I16 a) {
  const Raw sign = _mm_srai_epi16(a.raw, 15);
  return {_mm_sub_epi16(_mm_xor_si128(a.raw, sign), sign)};
}
inline I16 MultiplyRound(I16 a, I16 b) {
  // The product's bits 30..15, plus bit 14.
  const Raw low = _mm_mullo_epi16(a.raw, b.raw);
  const Raw upper = _mm_or_si128(_mm_slli_epi16(_mm_mulhi_epi16(a.raw, b.raw), 1), _mm_srli_epi16(low, 15));
  return {_mm_add_epi16(upper, _mm_srli_epi16(_mm_slli_epi16(low, 1), 15))};
}
#endif

}  // namespace
}  // namespace vidproc::VIDPROC_TARGET

#ifdef VIDPROC_TARGET_sse2
#include "simd/byte_look_ups.h"
#include "simd/byte_pairs.h"
#endif
#include "simd/one_tile.h"
