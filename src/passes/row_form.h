// The byte form of the plain scaler: a row at a time, without transposes. The vertical pass leaves one row of luma and
// one of Cb Cr pairs as bytes in the first-level cache; the horizontal pass gathers each pair of taps by one byte
// shuffle per window of the row. Valid only where RowFormIsExact has shown that no sum saturates and no value leaves a
// byte.
#pragma once

#include "passes/row_plan.h"
#include "passes/vertical_pass.h"
#include "simd/kernel_table.h"

namespace vidproc::VIDPROC_TARGET {
namespace {

#if VIDPROC_HAS_BYTE_OPS

/// Samples repeated on each side of a row.
constexpr int kEdgeSamples = 32;

/// A filtered row, its luma and its Cb Cr pairs apart.
struct SplitRow2vuy {
  std::uint8_t* luma;
  std::uint8_t* chroma;
};

/// Two signed byte coefficients in every 16-bit lane.
inline U8 SplatPair(int first, int second) { return AsU8(SplatI16((first & 0xFF) | second << 8)); }

/// (sum + half) >> kShift.
template <int kShift>
inline I16 RoundShift(I16 sum) {
  return MultiplyRound(sum, SplatI16(1 << (15 - kShift)));
}

/// One vector of the vertical result from kTaps rows; kTaps 0 copies the one row.
template <int kTaps, int kShift>
inline U8 FilterBytes(const std::uint8_t* const* rows, const U8* pairs, std::ptrdiff_t b) {
  if constexpr (kTaps == 0) {
    return LoadU8(rows[0] + b);
  } else {
    I16 low;
    I16 high;
    for (int t = 0; t < kTaps; t += 2) {
      const U8 first = LoadU8(rows[t] + b);
      const U8 second = t + 1 < kTaps ? LoadU8(rows[t + 1] + b) : SplatU8(0);
      const I16 productLow = MultiplyPairs(U8{ZipLow8(first.raw, second.raw)}, pairs[t / 2]);
      const I16 productHigh = MultiplyPairs(U8{ZipHigh8(first.raw, second.raw)}, pairs[t / 2]);
      low = t == 0 ? productLow : Add(low, productLow);
      high = t == 0 ? productHigh : Add(high, productHigh);
    }
    return Join(RoundShift<kShift>(low), RoundShift<kShift>(high));
  }
}

/// What the row after this one will read first, to be fetched ahead.
struct RowsAhead {
  const std::uint8_t* first;
  const std::uint8_t* second;
};

/// Where a vertical result goes that comes as two vectors of 2vuy bytes: luma and chroma apart.
struct SplitResult {
  SplitRow2vuy to;
  void Put(std::ptrdiff_t b, U8 first, U8 second) const {
    const I16 lowByte = SplatI16(0xFF);
    Store(to.chroma + b / 2, JoinInOrder(And(AsI16(first), lowByte), And(AsI16(second), lowByte)));
    Store(to.luma + b / 2, JoinInOrder(ShiftRightLogical<8>(AsI16(first)), ShiftRightLogical<8>(AsI16(second))));
  }
};

/// And one that comes from a plane: as it is.
struct PlaneResult {
  std::uint8_t* to;
  void Put(std::ptrdiff_t b, U8 first, U8 second) const {
    Store(to + b, first);
    Store(to + b + kVectorBytes, second);
  }
};

template <int kTaps, int kShift, class Result>
inline void FilterRowBytes(const std::uint8_t* const* rows, const std::int16_t* coefficients, int bytes,
                           const RowsAhead& ahead, const Result& result) {
  U8 pairs[2];
  for (int t = 0; t < kTaps; t += 2) {
    pairs[t / 2] = SplatPair(coefficients[t], t + 1 < kTaps ? coefficients[t + 1] : 0);
  }
  constexpr int kStep = 2 * kVectorBytes;
  for (int start = 0; start < bytes; start += kStep) {
    const int b = start + kStep <= bytes || bytes < kStep ? start : bytes - kStep;
    for (int line = 0; line < kStep; line += 64) {
      __builtin_prefetch(ahead.first + b + line);
      __builtin_prefetch(ahead.second + b + line);
    }
    result.Put(b, FilterBytes<kTaps, kShift>(rows, pairs, b),
               FilterBytes<kTaps, kShift>(rows, pairs, b + kVectorBytes));
  }
}

/// Repeats the edge's pair of samples outward.
inline void RepeatEdges(std::uint8_t* row, int samples) {
  for (int i = 0; i < kEdgeSamples; i += 2) {
    __builtin_memcpy(row - kEdgeSamples + i, row, 2);
    __builtin_memcpy(row + samples + i, row + samples - 2, 2);
  }
}

/// Filters the rows under output row `r`, where rowAt gives the start of a source row inside the frame.
template <int kShift, class RowAt, class Result>
inline void FilterRowsAt(const ScaleJob& job, int r, const RowAt& rowAt, int bytes, const Result& result) {
  const RowPosition position = job.rowPositions[r];
  const TapBank& bank = *job.verticalBank;
  const int skipped = bank.firstTap[position.phase];
  const std::int16_t* coefficients = bank.coefficient[position.phase] + skipped;
  const auto clampedRow = [&](int row) { return rowAt(Clamp(row, 0, job.inHeight - 1)); };
  const std::uint8_t* rows[4];
  for (int t = 0; t < 4; ++t) rows[t] = clampedRow(position.source - 1 + skipped + t);
  const int next = r + 1 < job.outHeight ? job.rowPositions[r + 1].source : position.source;
  const RowsAhead ahead{clampedRow(next), clampedRow(next + 1)};
  switch (bank.tapCount[position.phase]) {
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

/// The vertical result of output row `r`, from a 2vuy frame or from the planes that one would be interleaved from.
template <int kShift>
inline void FilterSourceRows(const ScaleJob& job, int r, const SplitRow2vuy& out) {
  if (job.planes == nullptr) {
    const auto rowAt = [&job](int row) { return job.source + row * job.sourceStride; };
    FilterRowsAt<kShift>(job, r, rowAt, 2 * job.inWidth, SplitResult{out});
  } else {
    const SourcePlanes& planes = *job.planes;
    const auto lumaAt = [&planes](int row) { return planes.luma + row * planes.lumaStride; };
    const auto chromaAt = [&planes](int row) { return planes.chroma + row / 2 * planes.chromaStride; };
    FilterRowsAt<kShift>(job, r, lumaAt, job.inWidth, PlaneResult{out.luma});
    FilterRowsAt<kShift>(job, r, chromaAt, job.inWidth, PlaneResult{out.chroma});
  }
  RepeatEdges(out.luma, job.inWidth);
  RepeatEdges(out.chroma, job.inWidth);
}

/// Walks the vectors of a grid along a row.
class GridWalk {
 public:
  GridWalk(const RowGrid& grid, const std::uint8_t* row) : grid(grid), row(row) {}

  /// The next vector of results, from kPairs pairs of taps.
  template <int kPairs, int kShift>
  I16 Next() {
    const std::uint8_t* pattern = grid.patterns + vector * (kVectorBytes * (1 + kPairs));
    const std::int32_t* windows = grid.windows + vector * (kVectorBytes / kWindowBytes);
    const U8 shuffle = LoadU8(pattern);
    I16 sum;
    for (int p = 0; p < kPairs; ++p) {
      const U8 samples = ShuffleWindows(LoadWindows(row + p * grid.tapPairBytes, windows), shuffle);
      const I16 products = MultiplyPairs(samples, LoadU8(pattern + (1 + p) * kVectorBytes));
      sum = p == 0 ? products : Add(sum, products);
    }
    if (++vector == grid.vectors) {
      vector = 0;
      row += grid.advance;
    }
    return RoundShift<kShift>(sum);
  }

 private:
  const RowGrid& grid;
  const std::uint8_t* row;
  int vector = 0;
};

template <int kPairs, int kShift>
inline void ScaleRow(const RowPlan& plan, const SplitRow2vuy& in, int width, std::uint8_t* out) {
  GridWalk luma(plan.luma, in.luma);
  GridWalk chroma(plan.chroma, in.chroma);
  for (int x = 0; x < width; x += kVectorBytes, out += 2 * kVectorBytes) {
    const I16 luma0 = luma.Next<kPairs, kShift>();
    const I16 luma1 = luma.Next<kPairs, kShift>();
    const I16 chroma0 = chroma.Next<kPairs, kShift>();
    const I16 chroma1 = chroma.Next<kPairs, kShift>();
    const U8 lumaBytes = Join(luma0, luma1);
    const U8 chromaBytes = Join(chroma0, chroma1);
    // Joining and zipping undo each other's order.
    const U8 first{ZipLow8(chromaBytes.raw, lumaBytes.raw)};
    const U8 second{ZipHigh8(chromaBytes.raw, lumaBytes.raw)};
    if (x + kVectorBytes <= width) {
      Store(out, first);
      Store(out + kVectorBytes, second);
    } else {
      std::uint8_t tail[2 * kVectorBytes];
      Store(tail, first);
      Store(tail + kVectorBytes, second);
      __builtin_memcpy(out, tail, 2 * static_cast<std::size_t>(width - x));
    }
  }
}

template <int kShift>
inline void ScaleRowOf(const RowPlan& plan, const SplitRow2vuy& in, int width, std::uint8_t* out) {
  if (plan.tapPairs == 1) return ScaleRow<1, kShift>(plan, in, width, out);
  if (plan.tapPairs == 2) return ScaleRow<2, kShift>(plan, in, width, out);
  if (plan.tapPairs == 3) return ScaleRow<3, kShift>(plan, in, width, out);
  ScaleRow<4, kShift>(plan, in, width, out);
}

/// Scales a frame row by row; noise is added while the row is in the cache.
template <int kShift>
inline void RunRows(const ScaleJob& job) {
  auto* const memory = reinterpret_cast<std::uint8_t*>(job.strip.rows);
  const SplitRow2vuy split{memory + kEdgeSamples, memory + 4 * kEdgeSamples + kRowSlack + job.inWidth};
  const auto rowBytes = std::ptrdiff_t{2} * job.outWidth;
  const bool viaStrip = job.noise != nullptr && job.destinationStride != rowBytes;
  for (int r = 0; r < job.outHeight; ++r) {
    std::uint8_t* const destination = job.destination + r * job.destinationStride;
    std::uint8_t* const row = viaStrip ? job.strip.outRows : destination;
    FilterSourceRows<kShift>(job, r, split);
    ScaleRowOf<kShift>(*job.rowPlan, split, job.outWidth, row);
    if (job.noise == nullptr) continue;
    const auto bytes = static_cast<std::uint64_t>(rowBytes);
    AddNoise(*job.noise, row, static_cast<std::uint64_t>(r) * bytes, bytes);
    if (viaStrip) __builtin_memcpy(destination, row, bytes);
  }
}

#endif

}  // namespace
}  // namespace vidproc::VIDPROC_TARGET
