// The vector vocabulary of the passes, for the instruction set that the build asks for (VIDPROC_TARGET). Every set has
// the same types and operations:
//
//   I16, U8, I32    a vector of signed 16-bit lanes, of unsigned bytes, of 32-bit lanes; all kVectorBytes long
//   kLanes          16-bit lanes of a vector
//   Load, Store     unaligned; LoadWiden/StoreNarrow move kLanes bytes to and from 16-bit lanes, in order
//   Split, Join     bytes to two vectors of 16-bit lanes and back with unsigned saturation; only Join undoes the order
//   Zip*            interleave within tiles of 128 bits, the order of Split
//   LoadTiles/StoreTiles   one 16-byte piece per tile, the pieces a stride apart
//   LoadHalves      the halves of a vector from two places
//
// VIDPROC_HAS_BYTE_OPS tells whether the set also shuffles bytes and multiplies them in pairs. Only then it has what
// the byte forms ask for beyond the rest:
//
//   ShuffleTiles, LoadWindows, ShuffleWindows, MultiplyPairs, MultiplyRound
//   Add, AddSaturate, AndNot, Equal   of bytes
//   JoinInOrder, JoinSigned
//
// Everything lies in an anonymous namespace inside the set's own: code compiled for a wide set gets no symbol that
// another unit could share.
#pragma once

#include <cstddef>
#include <cstdint>

#if defined(VIDPROC_TARGET_avx512) || defined(VIDPROC_TARGET_avx512vbmi)
#include "simd/avx512.h"
#elif defined(VIDPROC_TARGET_avx2)
#include "simd/avx2.h"
#elif defined(VIDPROC_TARGET_sse2) || defined(VIDPROC_TARGET_sse41)
#include "simd/sse.h"
#elif defined(VIDPROC_TARGET_neon)
#include "simd/neon.h"
#else
#include "simd/scalar.h"
#endif

#include "simd/transpose.h"
