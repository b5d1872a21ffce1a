// The adaptive scalers on bytes: strips of one vector of byte rows, for banks whose outer taps are not negative and add
// up to at most the whole. Then the result is the centre sample plus a weighted mean of differences,
//
//   v = s_c + ((sum of a_t (s_t - s_c) + 64) >> 7)
//
// and a tap has weight only where its difference is below 16, so that weights, differences and results all fit bytes.
// The weight of a difference comes from a table of 16 by a byte shuffle, which gives 0 by itself for larger ones.
#pragma once

#include "kernels/passes/byte_arithmetic.h"
#include "kernels/passes/strip_driver.h"

namespace vidproc::VIDPROC_TARGET {
namespace {

#if VIDPROC_HAS_BYTE_OPS

/// Fills table with the weight (w(d) * coefficient + 128) >> 8 of each difference d below 16.
inline void FillWeightTable(int coefficient, int shift, std::uint8_t (&table)[16]) {
  for (int d = 0; d < 16; ++d) {
    const int lost = d * d << shift;
    table[d] = static_cast<std::uint8_t>(((256 - (lost < 256 ? lost : 256)) * coefficient + 128) >> 8);
  }
}

/// The taps of a phase around its centre that are not zero, as many as an even count asks for; the rest weigh nothing.
struct OuterTaps {
  int count = 0;
  int tap[kMaxTaps] = {};  ///< distance from the centre tap
  int coefficient[kMaxTaps] = {};
  int centreCoefficient = 128;
  std::uint8_t table[kMaxTaps][16] = {};
};

inline OuterTaps FindOuterTaps(const std::int16_t* coefficients, int taps, int shift) {
  OuterTaps outer;
  const int centre = taps / 2 - 1;
  for (int t = 0; t < taps; ++t) {
    if (t == centre || coefficients[t] == 0) continue;
    outer.tap[outer.count] = t - centre;
    outer.coefficient[outer.count] = coefficients[t];
    outer.centreCoefficient -= coefficients[t];
    FillWeightTable(coefficients[t], shift, outer.table[outer.count++]);
  }
  return outer;
}

/// The weight that a table gives to the difference of sample and centre.
inline U8 WeightOf(U8 sample, U8 centre, U8 table) { return LookUpBelow16(table, AbsoluteDifference(sample, centre)); }

/// A phase's taps in registers.
template <int kOuter>
class ByteTaps {
 public:
  explicit ByteTaps(const OuterTaps& outer) {
    for (int k = 0; k < kOuter; ++k) table[k] = LoadRepeated(outer.table[k]);
    for (int k = 0; k < kOuter; k += 2) pair[k / 2] = SplatPair(outer.coefficient[k], outer.coefficient[k + 1]);
    pair[kOuter / 2] = SplatPair(outer.centreCoefficient, 0);
  }

  /// Edges preserved where the motion test finds rest.
  template <class MotionTest>
  U8 Filter(U8 centre, const U8 (&sample)[kOuter + 1], const MotionTest& motionTest, int offset) const {
    return motionTest.FindStill(centre, offset).Select(Adapt(centre, sample), Smooth(centre, sample));
  }

 private:
  /// Edges preserved.
  U8 Adapt(U8 centre, const U8 (&sample)[kOuter + 1]) const {
    Halves sum{SplatI16(0), SplatI16(0)};
    for (int k = 0; k < kOuter; k += 2) {
      const U8 weight0 = WeightOf(sample[k], centre, table[k]);
      const U8 weight1 = WeightOf(sample[k + 1], centre, table[k + 1]);
      sum = Add(sum, MultiplyZipped(weight0, weight1, Subtract(sample[k], centre), Subtract(sample[k + 1], centre)));
    }
    return Add(centre, RoundToSignedBytes<7>(sum));
  }

  /// The full low-pass, for samples that have moved.
  U8 Smooth(U8 centre, const U8 (&sample)[kOuter + 1]) const {
    if constexpr (kOuter == 0) return centre;
    Halves sum = MultiplyZipped(centre, SplatU8(0), pair[kOuter / 2]);
    for (int k = 0; k < kOuter; k += 2) sum = Add(sum, MultiplyZipped(sample[k], sample[k + 1], pair[k / 2]));
    return RoundToBytes<7>(sum);
  }

  U8 table[kOuter + 1];
  U8 pair[kOuter / 2 + 1];
};

/// Stores the filtered bytes as they are.
struct StoreBytes {
  void Put(std::uint8_t* out, U8 value) const { Store(out, value); }
};

/// Blends with the history bytes that the result replaces, by the same kind of table.
struct BlendBytes {
  U8 table;
  BlendBytes(int strength, int shift) {
    std::uint8_t weights[16];
    FillWeightTable(strength, shift, weights);
    table = LoadRepeated(weights);
  }
  void Put(std::uint8_t* history, U8 value) const {
    const U8 reference = LoadU8(history);
    const U8 alpha = WeightOf(reference, value, table);
    const U8 difference = Subtract(reference, value);
    Store(history, Add(value, RoundToSignedBytes<7>(MultiplyZipped(alpha, SplatU8(0), difference, difference))));
  }
};

/// Calls filter with the phase's taps as ByteTaps of the next even count that the library has a form for.
template <class Filter>
inline void WithByteTaps(const OuterTaps& outer, const Filter& filter) {
  if (outer.count == 0) return filter(ByteTaps<0>(outer));
  if (outer.count <= 2) return filter(ByteTaps<2>(outer));
  if (outer.count <= 4) return filter(ByteTaps<4>(outer));
  if (outer.count <= 6) return filter(ByteTaps<6>(outer));
  if (outer.count <= 8) return filter(ByteTaps<8>(outer));
  filter(ByteTaps<kMaxTaps>(outer));
}

/// The strip: one vector of rows, columns of as many bytes.
struct ByteColumnScaler {
  static constexpr int kRows = kVectorBytes;

  static std::uint8_t* Rows(const StripMemory& strip) { return reinterpret_cast<std::uint8_t*>(strip.rows); }
  static std::uint8_t* Column(const StripMemory& strip, std::ptrdiff_t byteColumn) {
    return reinterpret_cast<std::uint8_t*>(strip.columns) + (kEdgeColumns + byteColumn) * kRows;
  }

  static void ToColumns(const StripMemory& strip, int rowBytes) {
    const std::uint8_t* const rows = Rows(strip);
    for (int c = 0; c < rowBytes; c += 16) {
      U8 block[16];
      for (int i = 0; i < 16; ++i) block[i] = LoadTiles(rows + i * strip.rowPitch + c, 16 * strip.rowPitch);
      TransposeTiles(block);
      for (int i = 0; i < 16; ++i) Store(Column(strip, c + i), block[i]);
    }
    for (int i = 0; i < kEdgeColumns; ++i) {
      Store(Column(strip, i - kEdgeColumns), LoadU8(Column(strip, i % 4)));
      Store(Column(strip, rowBytes + i), LoadU8(Column(strip, rowBytes - 4 + i % 4)));
    }
  }

  static void KeepVerticalResult(const ScaleJob& job, int firstRow, int rowCount) {
    for (int c = 0; c < 2 * job.inWidth; ++c) {
      const std::uint8_t* const column = Column(job.strip, c);
      std::int16_t* const to = job.previousVertical + std::ptrdiff_t{c} * job.outHeight + firstRow;
      if (c + 8 < 2 * job.inWidth) __builtin_prefetch(to + std::ptrdiff_t{8} * job.outHeight, 1);
      int r = 0;
      for (; r + kLanes <= rowCount; r += kLanes) Store(to + r, LoadWiden(column + r));
      for (; r < rowCount; ++r) to[r] = column[r];
    }
  }
};

template <int kTaps, class MotionTest>
struct ByteVerticalScale {
  int shift;
  MotionTest motionTest;

  void operator()(const ScaleJob& job, int firstRow, int rowCount) const {
    const int bytes = 2 * job.inWidth;
    for (int r = 0; r < rowCount; ++r) {
      const RowPosition position = job.rowPositions[firstRow + r];
      const OuterTaps outer = FindOuterTaps(job.verticalBank->coefficient[position.phase], kTaps, shift);
      const std::uint8_t* rows[kMaxTaps];
      for (int k = 0; k < kMaxTaps; ++k) rows[k] = SourceRow(job, position.source + outer.tap[k]);
      const std::uint8_t* const centre = SourceRow(job, position.source);
      const std::uint8_t* const ahead = SourceRow(job, position.source + kTaps);
      const MotionTest rowTest = motionTest.WithPrevious(PreviousInputRow(job, firstRow + r));
      std::uint8_t* const out = ByteColumnScaler::Rows(job.strip) + r * job.strip.rowPitch;
      WithByteTaps(outer, [&](const auto& taps) { FilterRow(taps, rowTest, rows, centre, ahead, bytes, out); });
    }
  }

 private:
  template <int kOuter>
  static void FilterRow(const ByteTaps<kOuter>& taps, const MotionTest& rowTest, const std::uint8_t* const* rows,
                        const std::uint8_t* centre, const std::uint8_t* ahead, int bytes, std::uint8_t* out) {
    for (int start = 0; start < bytes; start += kVectorBytes) {
      const int b = VectorStart(start, bytes, kVectorBytes);
      __builtin_prefetch(ahead + b);
      U8 sample[kOuter + 1];
      for (int k = 0; k < kOuter; ++k) sample[k] = LoadU8(rows[k] + b);
      Store(out + b, taps.Filter(LoadU8(centre + b), sample, rowTest, b));
    }
  }
};

template <int kTaps, class MotionTest, class Result>
struct ByteHorizontalScale {
  int shift;
  MotionTest motionTest;
  Result result;

  void operator()(const ScaleJob& job, const StripResult& out) const {
    for (int i = 0; i < job.horizontal->runCount; ++i) {
      const PhaseRun& phase = job.horizontal->runs[i];
      const OuterTaps outer = FindOuterTaps(job.horizontalBank->coefficient[phase.phase], kTaps, shift);
      WithByteTaps(outer, [&](const auto& taps) {
        for (const Component component : kComponents) {
          FilterRun(taps, outer, job.strip, MakeOutputRun(job, phase, component), out);
        }
      });
    }
  }

 private:
  static constexpr int kAhead = 8;

  template <int kOuter>
  void FilterRun(const ByteTaps<kOuter>& taps, const OuterTaps& outer, const StripMemory& strip, const OutputRun& run,
                 const StripResult& out) const {
    const std::ptrdiff_t step = run.component.step;
    for (int k = 0; k < run.count; ++k) {
      const std::uint8_t* const centre =
          ByteColumnScaler::Column(strip, run.positions[k].source * step + run.component.firstByte);
      const std::ptrdiff_t column = run.positions[k].output * step + run.component.firstByte;
      // History lies a frame's height apart from column to column, which hardware does not foresee.
      const std::ptrdiff_t later =
          run.positions[k + kAhead < run.count ? k + kAhead : k].output * step + run.component.firstByte;
      __builtin_prefetch(out.columns + later * out.stride);
      if (out.previousVertical != nullptr) __builtin_prefetch(out.PreviousVertical(later));
      U8 sample[kOuter + 1];
      for (int t = 0; t < kOuter; ++t) sample[t] = LoadU8(centre + outer.tap[t] * step * ByteColumnScaler::kRows);
      const MotionTest columnTest = motionTest.WithPrevious(out.PreviousVertical(column));
      result.Put(out.columns + column * out.stride, taps.Filter(LoadU8(centre), sample, columnTest, 0));
    }
  }
};

template <int kTaps, class MotionTest, class Result>
inline ByteHorizontalScale<kTaps, MotionTest, Result> ScaleByteRows(int shift, const Result& result) {
  return {shift, {}, result};
}

#endif

}  // namespace
}  // namespace vidproc::VIDPROC_TARGET
