// The vector vocabulary of the kernels, for the instruction set that the build asks for (VIDPROC_TARGET). Every set has
// the same types and operations; simd/scalar.h says in plain C++ what each of them does.
//
//   I16, U8, I32             vectors of signed 16-bit lanes, of unsigned bytes, of 32-bit lanes; kVectorBytes long
//   kLanes                   16-bit lanes of a vector
//   LoadI16, LoadU8, Store   unaligned
//   LoadWiden, StoreNarrow   kLanes bytes to 16-bit lanes and back, saturated to 0..255
//   LoadHalves               the two halves of a vector from two places
//   ShiftLeft(a, count)      count is not negative; from 16 on the result is 0
//   AndNot(mask, a)          ~mask & a
//   Less, Equal              all bits of a lane where it holds, else none
//   AbsoluteSigned           of signed bytes, as unsigned ones: of -128 128
//   Average                  (a + b + 1) >> 1
//   MultiplyLow              the low 16 bits of products
//   MultiplyAdd              a[2i] * b[2i] + a[2i+1] * b[2i+1] of 16-bit lanes, in 32 bits
//   MultiplyPairs            the same of bytes in 16 bits, a unsigned and b signed; the sum saturates
//   MultiplyRound            (a * b + 16384) >> 15; a and b are not both -32768
//   LookUpBelow16(t, i)      in every tile t[i], and 0 where i is 16 or more
//   LoadWindows, ShuffleWindows   kernels/byte_row_plan.h explains windows; indices stay inside them
//   kHasVectors              false: vectors are arrays, and plain code is faster
//   kHasByteShuffle          look-ups, shuffles and MultiplyPairs are instructions: without, 16-bit lanes are faster
//
// Lane order. A vector consists of tiles of 128 bits: two with AVX2, four with AVX-512, one with all other sets. Wide
// sets interleave and pack tile by tile, and nearly all operations treat tiles alike; here two of them, A and B:
//
//   a vector of bytes                     A0 .. A7  A8 .. A15 | B0 .. B7  B8 .. B15
//   Split gives 16-bit lanes    low       A0 .. A7            | B0 .. B7
//                               high      A8 .. A15           | B8 .. B15
//   Join(low, high) is again              A0 .. A7  A8 .. A15 | B0 .. B7  B8 .. B15
//
// This is split order: `low` and `high` are no halves of memory, and only what goes back through Join is in place
// again. All operations on Halves keep to it, and LoadSplit reads 16-bit values into it. Lanes that are in memory's
// order, by LoadI16 or LoadWiden, need another end:
//
//   first, second                         F0 .. F7 | F8 .. F15    S0 .. S7 | S8 .. S15
//   JoinInOrder(first, second)            F0 .. F7  F8 .. F15 | S0 .. S7  S8 .. S15
//
//   LoadTiles.., StoreTiles  one 16-byte piece per tile, the pieces `stride` values apart
//   LoadTilesAt              the same, each from its own offset
//   ShuffleTiles(t, i)       in every tile t[i]; indices are below 16
//   LoadRepeated             the same 16 bytes in every tile
//   TransposeTiles           in every tile by itself
//
// Everything lies in an anonymous namespace inside the set's own: code compiled for a wide set gets no symbol that
// another unit could share. `raw` and the Zip operations are for this folder only.
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
#elif defined(VIDPROC_TARGET_wasm)
#include "simd/wasm.h"
#elif defined(VIDPROC_TARGET_portable)
#include "simd/portable.h"
#else
#include "simd/scalar.h"
#endif

#include "simd/derived.h"
#include "simd/transpose.h"
