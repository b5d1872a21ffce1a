// Vertical pass in bytes: filters up to eight rows of bytes into one. Sums of products are 16-bit lanes: all pairs of
// taps but the last must not leave them together, nor the last one by itself; then adding the last saturates only where
// the result would not be a byte, and its rounding clamps to the same.
#pragma once

#include "compiler/compiler.h"
#include "kernels/passes/byte_arithmetic.h"
#include "kernels/passes/vector_walk.h"
#include "kernels/scale_job.h"

namespace vidproc::VIDPROC_TARGET {
namespace {

// The pass takes two vectors at a time and reads no less.
static_assert(2 * kVectorBytes <= kMinRowBytes);

/// What becomes of two vectors of results, from byte b of the row on: stored as they are.
struct PlaneResult {
  std::uint8_t* to;
  void Put(std::ptrdiff_t b, U8 first, U8 second) const {
    Store(to + b, first);
    Store(to + b + kVectorBytes, second);
  }
};

/// A 2vuy row, its luma and its Cb Cr pairs apart.
struct SplitRow2vuy {
  std::uint8_t* luma;
  std::uint8_t* chroma;
};

/// Results that are 2vuy bytes: luma and chroma are stored apart.
struct SplitResult {
  SplitRow2vuy to;
  void Put(std::ptrdiff_t b, U8 first, U8 second) const {
    Store(to.chroma + b / 2, JoinInOrder(EvenBytes(first), EvenBytes(second)));
    Store(to.luma + b / 2, JoinInOrder(OddBytes(first), OddBytes(second)));
  }
};

/// One vector of results from kTaps rows; kTaps 0 copies the one row.
template <int kTaps, int kShift>
VIDPROC_ALWAYS_INLINE U8 FilterBytes(const std::uint8_t* const* rows, const U8* pairs, std::ptrdiff_t b) {
  if constexpr (kTaps == 0) {
    return LoadU8(rows[0] + b);
  } else {
    Halves sum;
    for (int t = 0; t < kTaps; t += 2) {
      const U8 first = LoadU8(rows[t] + b);
      const U8 second = t + 1 < kTaps ? LoadU8(rows[t + 1] + b) : SplatU8(0);
      const Halves products = MultiplyPairsOf(first, second, pairs[t / 2]);
      sum = t == 0 ? products : t + 2 < kTaps ? Add(sum, products) : AddSaturate(sum, products);
    }
    return RoundToBytes<kShift>(sum);
  }
}

/// Two source rows of the next output row, fetched ahead.
struct RowsAhead {
  const std::uint8_t* first;
  const std::uint8_t* second;
};

template <int kTaps, int kShift, class Result>
inline void FilterRowBytes(const std::uint8_t* const* rows, const std::int16_t* coefficients, int bytes,
                           RowsAhead ahead, Result result) {
  U8 pairs[kTaps / 2 + 1];
  for (int t = 0; t < kTaps; t += 2) {
    pairs[t / 2] = SplatPair(coefficients[t], t + 1 < kTaps ? coefficients[t + 1] : 0);
  }
  // Copies, as the last two parameters are, because bytes that are stored might be those of the list.
  const std::uint8_t* from[kTaps + 1];
  for (int t = 0; t == 0 || t < kTaps; ++t) from[t] = rows[t];
  constexpr int kStep = 2 * kVectorBytes;
  WalkSteps(bytes, kStep, [&](std::ptrdiff_t b) {
    for (int line = 0; line < kStep; line += 64) {
      Prefetch(ahead.first + b + line);
      Prefetch(ahead.second + b + line);
    }
    result.Put(b, FilterBytes<kTaps, kShift>(from, pairs, b),
               FilterBytes<kTaps, kShift>(from, pairs, b + kVectorBytes));
  });
}

/// The pass over a frame or plane of inHeight rows, with kTaps taps: 4 or 8. Rows beyond it repeat its first or last
/// one.
template <int kTaps>
struct ByteVerticalPass {
  const PhasePosition* positions;  ///< one per output row
  const TapBank* bank;
  int inHeight;
  int outHeight;

  /// Filters `bytes` bytes of output row r; rowAt(i) is the start of source row i, which lies inside the frame.
  template <int kShift, class RowAt, class Result>
  void FilterRow(int r, const RowAt& rowAt, int bytes, const Result& result) const {
    const auto clampedRow = [&](int row) { return rowAt(Clamp(row, 0, inHeight - 1)); };
    const PhasePosition position = positions[r];
    const int first = bank->firstTap[position.phase];
    const std::int16_t* const coefficients = bank->coefficient[position.phase] + first;
    const std::uint8_t* rows[kTaps];
    for (int t = 0; t < kTaps; ++t) rows[t] = clampedRow(position.source - (kTaps / 2 - 1) + first + t);
    const int next = positions[r + 1 < outHeight ? r + 1 : r].source;
    const RowsAhead ahead{clampedRow(next), clampedRow(next + 1)};
    const int count = bank->tapCount[position.phase];
    if constexpr (kTaps == 8) {
      if (count > 6) return FilterRowBytes<8, kShift>(rows, coefficients, bytes, ahead, result);
      if (count > 4) return FilterRowBytes<6, kShift>(rows, coefficients, bytes, ahead, result);
    }
    switch (count) {
      case 1:
        if (coefficients[0] == 1 << kShift) return FilterRowBytes<0, kShift>(rows, coefficients, bytes, ahead, result);
        return FilterRowBytes<1, kShift>(rows, coefficients, bytes, ahead, result);
      case 2:
        return FilterRowBytes<2, kShift>(rows, coefficients, bytes, ahead, result);
      case 3:
        return FilterRowBytes<3, kShift>(rows, coefficients, bytes, ahead, result);
      default:
        return FilterRowBytes<4, kShift>(rows, coefficients, bytes, ahead, result);
    }
  }
};

}  // namespace
}  // namespace vidproc::VIDPROC_TARGET
