// How the byte row scaler finds its samples, as plain data laid out at set-up.
//
// A row of outputs is made in vectors of 16-bit results. Every result needs the samples under its taps, which lie side
// by side in the row; taps are taken in pairs. For one pair of taps, a byte shuffle brings two samples to each result,
// and one multiplication of byte pairs weighs and adds them. At a ratio of 3:2, say, for the first two of four taps:
//
//   row         s0  s1  s2  s3  s4  s5  s6  s7  s8 ..     bytes of one component
//   window          [s1  s2  s3  s4  s5 .. s16]           windowBytes of them, from a byte offset on
//   indices     0 1 | 1 2 | 3 4 | 4 5 | 6 7 | ..          where in the window each result's two samples are
//   shuffled   s1 s2|s2 s3|s4 s5|s5 s6|s7 s8| ..
//   weighed by a0 a1|b0 b1|a0 a1|b0 b1|a0 a1| ..          a, b: the coefficients of the two phases in turn
//   results      r0    r1    r2    r3    r4   ..
//
// The next pair of taps lies two samples further: the same indices serve a window loaded from there. A shuffle does not
// reach beyond its window, so a vector whose outputs span more of the row has several, each loaded from its own offset:
// one window per 16 bytes of the vector, or a single one of 64 bytes where an instruction reaches so far.
//
// Cb and Cr take turns in their row: results do too, and the two samples of a pair lie two bytes apart.
//
// Indices and coefficients together are a vector's pattern. They depend on the phases of its outputs only, and so
// repeat along the row: after one period of `vectors` vectors the same patterns serve a place `advance` bytes further
// on.
#pragma once

#include <cstdint>

namespace vidproc {

/// Widths that a level's byte row scaler works in; 0 where it has none.
struct ByteRowShape {
  std::int32_t vectorBytes;
  std::int32_t windowBytes;
  bool operator==(const ByteRowShape&) const = default;
};

/// The outputs of one component's row (luma samples, or Cb Cr pairs) in vectors of vectorBytes / 2 results.
struct ByteRowGrid {
  /// Per vector: vectorBytes shuffle indices, then as many signed byte coefficients for each pair of taps.
  const std::uint8_t* patterns;
  const std::int32_t* windows;  ///< per vector: byte offset into the row of each of its windows
  std::int32_t vectors;         ///< of one period
  std::int32_t advance;         ///< bytes of the row from one period to the next; 0 where a row has no second one
};

struct ByteRowPlan {
  std::int32_t tapPairs;  ///< at most half of the taps
  ByteRowGrid luma;
  ByteRowGrid chroma;
};

}  // namespace vidproc
