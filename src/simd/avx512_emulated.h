// AVX-512 intrinsics for machines without them: SIMDe's, and those that SIMDe 0.7 lacks or misspells. For tests only.
#pragma once

#define SIMDE_ENABLE_NATIVE_ALIASES
#include <simde/x86/avx512.h>

#include <cstdint>

namespace vidproc::VIDPROC_TARGET {
namespace {

inline __m512i EmulatedWiden(__m256i a) {
  std::uint8_t in[32];
  std::int16_t out[32];
  _mm256_storeu_si256(reinterpret_cast<__m256i*>(in), a);
  for (int i = 0; i < 32; ++i) out[i] = in[i];
  return simde_mm512_loadu_si512(out);
}

inline __m256i EmulatedNarrow(__m512i a) {
  std::uint16_t in[32];
  std::uint8_t out[32];
  simde_mm512_storeu_si512(in, a);
  for (int i = 0; i < 32; ++i) out[i] = static_cast<std::uint8_t>(in[i] < 255 ? in[i] : 255);
  return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(out));
}

inline __m512i EmulatedShiftRight(__m512i a, int count) {
  std::int32_t lanes[16];
  simde_mm512_storeu_si512(lanes, a);
  for (std::int32_t& lane : lanes) lane >>= count;
  return simde_mm512_loadu_si512(lanes);
}

}  // namespace
}  // namespace vidproc::VIDPROC_TARGET

#undef _mm512_madd_epi16
#define _mm512_madd_epi16(a, b) simde_mm512_madd_epi16(a, b)
#define _mm512_cmpgt_epi16_mask(a, b) (~simde_mm512_cmple_epi16_mask(a, b))
#define _mm512_cvtepu8_epi16(a) EmulatedWiden(a)
#define _mm512_cvtusepi16_epi8(a) EmulatedNarrow(a)
#undef _mm512_srai_epi32
#define _mm512_srai_epi32(a, count) EmulatedShiftRight(a, count)
