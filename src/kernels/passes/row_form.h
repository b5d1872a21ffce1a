// The byte form of the plain scaler: a row at a time, without transposes. The vertical pass leaves one row of luma and
// one of Cb Cr pairs as bytes in the first-level cache; the horizontal pass gathers each pair of taps by one byte
// shuffle per window of the row. Valid only where ByteRowScalerIsExact has shown that no sum saturates and no value
// leaves a byte.
#pragma once

#include "kernels/byte_row_plan.h"
#include "kernels/passes/byte_arithmetic.h"
#include "kernels/passes/put_rows.h"
#include "kernels/passes/vector_walk.h"

namespace vidproc::VIDPROC_TARGET {
namespace {

#if VIDPROC_HAS_BYTE_OPS

// The vertical pass takes two vectors at a time and reads no less.
static_assert(2 * kVectorBytes <= kMinRowBytes);

/// Samples repeated on each side of a row.
constexpr int kEdgeSamples = 32;

/// A filtered row, its luma and its Cb Cr pairs apart.
struct SplitRow2vuy {
  std::uint8_t* luma;
  std::uint8_t* chroma;
};

/// One vector of the vertical result from kTaps rows; kTaps 0 copies the one row.
template <int kTaps, int kShift>
[[gnu::always_inline]] inline U8 FilterBytes(const std::uint8_t* const* rows, const U8* pairs, std::ptrdiff_t b) {
  if constexpr (kTaps == 0) {
    return LoadU8(rows[0] + b);
  } else {
    Halves sum;
    for (int t = 0; t < kTaps; t += 2) {
      const U8 first = LoadU8(rows[t] + b);
      const U8 second = t + 1 < kTaps ? LoadU8(rows[t + 1] + b) : SplatU8(0);
      const Halves products = MultiplyZipped(first, second, pairs[t / 2]);
      sum = t == 0 ? products : Add(sum, products);
    }
    return RoundToBytes<kShift>(sum);
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
    const int b = VectorStart(start, bytes, kStep);
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

constexpr int kWindows = kVectorBytes / kWindowBytes;

/// Where the windows of a vector begin, counted from the row's place: each anywhere, or side by side.
struct SpreadWindows {
  explicit SpreadWindows(const std::int32_t* offsets) {
    __builtin_memcpy(this->offsets, offsets, sizeof this->offsets);
  }
  U8 Load(const std::uint8_t* row) const { return LoadWindows(row, offsets); }
  std::int32_t offsets[kWindows];
};
struct AdjacentWindows {
  explicit AdjacentWindows(const std::int32_t* offsets) : first(offsets[0]) {}
  U8 Load(const std::uint8_t* row) const { return LoadU8(row + first); }
  std::ptrdiff_t first;
};

inline bool AreAdjacent(const std::int32_t* offsets) {
  for (int w = 1; w < kWindows; ++w) {
    if (offsets[w] != offsets[0] + w * kWindowBytes) return false;
  }
  return true;
}

/// What a vector of results is gathered and weighted by.
template <int kPairs>
struct Pattern {
  explicit Pattern(const std::uint8_t* memory) : shuffle(LoadU8(memory)) {
    for (int p = 0; p < kPairs; ++p) coefficients[p] = LoadU8(memory + (1 + p) * kVectorBytes);
  }
  U8 shuffle;
  U8 coefficients[kPairs];
};

/// Samples of a component lie kSampleBytes apart: 1 for luma, 2 for Cb and Cr.
template <int kPairs, int kShift, int kSampleBytes, class Windows>
[[gnu::always_inline]] inline I16 FilterWindows(const std::uint8_t* row, const Windows& windows,
                                                const Pattern<kPairs>& pattern) {
  I16 sum;
  for (int p = 0; p < kPairs; ++p) {
    const U8 samples = ShuffleWindows(windows.Load(row + p * 2 * kSampleBytes), pattern.shuffle);
    const I16 products = MultiplyPairs(samples, pattern.coefficients[p]);
    sum = p == 0 ? products : Add(sum, products);
  }
  return RoundShift<kShift>(sum);
}

/// Walks the vectors of a grid along a row.
template <int kPairs, int kShift, int kSampleBytes>
class GridWalk {
 public:
  GridWalk(const ByteRowGrid& grid, const std::uint8_t* row) : grid(grid), row(row) {}

  /// The next vector of results.
  [[gnu::always_inline]] I16 Next() {
    const Pattern<kPairs> pattern(grid.patterns + vector * (kVectorBytes * (1 + kPairs)));
    const SpreadWindows windows(grid.windows + vector * kWindows);
    const I16 result = FilterWindows<kPairs, kShift, kSampleBytes>(row, windows, pattern);
    if (++vector == grid.vectors) {
      vector = 0;
      row += grid.advance;
    }
    return result;
  }

 private:
  const ByteRowGrid& grid;
  const std::uint8_t* row;
  int vector = 0;
};

/// The same where every vector has the same pattern, which then stays in registers: ratios like 2:1, 3:2 and 1:2.
template <int kPairs, int kShift, int kSampleBytes, class Windows>
class UniformGridWalk {
 public:
  UniformGridWalk(const ByteRowGrid& grid, const std::uint8_t* row)
      : row(row), advance(grid.advance), windows(grid.windows), pattern(grid.patterns) {}

  [[gnu::always_inline]] I16 Next() {
    const I16 result = FilterWindows<kPairs, kShift, kSampleBytes>(row, windows, pattern);
    row += advance;
    return result;
  }

 private:
  const std::uint8_t* row;
  std::ptrdiff_t advance;
  Windows windows;
  Pattern<kPairs> pattern;
};

/// The horizontal pass over one row.
template <int kShift, class LumaResult>
class RowScale {
 public:
  RowScale(const ByteRowPlan& plan, int width, const LumaResult& lumaResult)
      : plan(plan), width(width), lumaResult(lumaResult) {}

  void Run(const SplitRow2vuy& in, std::uint8_t* out) const {
    if (plan.tapPairs == 1) return RunPairs<1>(in, out);
    if (plan.tapPairs == 2) return RunPairs<2>(in, out);
    if (plan.tapPairs == 3) return RunPairs<3>(in, out);
    RunPairs<4>(in, out);
  }

 private:
  template <int kPairs>
  void RunPairs(const SplitRow2vuy& in, std::uint8_t* out) const {
    if (plan.luma.vectors != 1 || plan.chroma.vectors != 1) {
      Walk(GridWalk<kPairs, kShift, 1>(plan.luma, in.luma), GridWalk<kPairs, kShift, 2>(plan.chroma, in.chroma), out);
    } else if (kWindows > 1 && AreAdjacent(plan.luma.windows) && AreAdjacent(plan.chroma.windows)) {
      RunUniform<kPairs, AdjacentWindows>(in, out);
    } else {
      RunUniform<kPairs, SpreadWindows>(in, out);
    }
  }

  template <int kPairs, class Windows>
  void RunUniform(const SplitRow2vuy& in, std::uint8_t* out) const {
    Walk(UniformGridWalk<kPairs, kShift, 1, Windows>(plan.luma, in.luma),
         UniformGridWalk<kPairs, kShift, 2, Windows>(plan.chroma, in.chroma), out);
  }

  template <class Luma, class Chroma>
  void Walk(Luma luma, Chroma chroma, std::uint8_t* out) const {
    const LumaResult result = lumaResult;
    int x = 0;
    for (; x + kVectorBytes <= width; x += kVectorBytes) StorePixels(result, luma, chroma, out + 2 * x);
    if (x == width) return;
    std::uint8_t tail[2 * kVectorBytes];
    StorePixels(result, luma, chroma, tail);
    __builtin_memcpy(out + 2 * x, tail, 2 * static_cast<std::size_t>(width - x));
  }

  /// 2 * kVectorBytes bytes of 2vuy from two vectors of luma and two of chroma.
  template <class Luma, class Chroma>
  [[gnu::always_inline]] static void StorePixels(const LumaResult& result, Luma& luma, Chroma& chroma,
                                                 std::uint8_t* out) {
    const I16 luma0 = result.Apply(luma.Next());
    const I16 luma1 = result.Apply(luma.Next());
    const I16 chroma0 = chroma.Next();
    const I16 chroma1 = chroma.Next();
    const U8 lumaBytes = Join(luma0, luma1);
    const U8 chromaBytes = Join(chroma0, chroma1);
    // Joining and zipping undo each other's order.
    Store(out, U8{ZipLow8(chromaBytes.raw, lumaBytes.raw)});
    Store(out + kVectorBytes, U8{ZipHigh8(chromaBytes.raw, lumaBytes.raw)});
  }

  const ByteRowPlan& plan;
  const int width;
  const LumaResult lumaResult;
};

/// Scales a frame row by row.
template <int kShift, class LumaResult>
inline void RunRows(const ScaleJob& job, const LumaResult& lumaResult) {
  auto* const memory = reinterpret_cast<std::uint8_t*>(job.strip.rows);
  const SplitRow2vuy split{memory + kEdgeSamples, memory + 4 * kEdgeSamples + kRowSlack + job.inWidth};
  const RowScale<kShift, LumaResult> horizontal(*job.byteRowPlan, job.outWidth, lumaResult);
  for (int r = 0; r < job.outHeight; ++r) {
    FilterSourceRows<kShift>(job, r, split);
    PutRows(job, r, 1, [&](std::uint8_t* row, std::ptrdiff_t /*stride*/) { horizontal.Run(split, row); });
  }
}

#endif

}  // namespace
}  // namespace vidproc::VIDPROC_TARGET
