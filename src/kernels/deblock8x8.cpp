// Deblocking of the 8 x 8 grid: a low-pass filter across block edges that lets go as the step across the edge grows.
//
//   d = before - after                               the two samples at the edge
//   w = 256 - min(|d * edgeSensitivity|, 256)
//   c_t = (f_t * w + 128) >> 8, t = 0..7, t != 3     f: the filter's taps, t = 3 on the sample itself
//   c_3 = min(32768 - sum of f_t * w + 128, 32768) >> 8
//   out = (sum of c_t * s_t + 64) >> 7
//
// Three samples on each side of an edge are filtered, vertically into 16-bit values, which are not clamped, then
// horizontally on each component's own grid; the two samples in the middle of a block stay. 16-bit lanes: products and
// the sum of the outer weights wrap, sums of products saturate. The frame is replaced strip by strip.
#include <cstring>

#include "kernels/deblock_job.h"
#include "kernels/kernel_table.h"
#include "kernels/passes/horizontal_pass.h"
#include "kernels/passes/transposes.h"
#include "kernels/passes/vector_walk.h"

namespace vidproc::VIDPROC_TARGET {
namespace {

constexpr int kBlock = 8;
constexpr int kTapsBefore = 3;
constexpr int kReach = 3;  ///< samples filtered on each side of an edge
constexpr int kRowsAbove = 3;

inline I16 EdgeWeight(I16 before, I16 after, I16 sensitivity) {
  const I16 effect = Absolute(MultiplyLow(SubtractSaturate(before, after), sensitivity));
  return Subtract(SplatI16(256), MinUnsigned(effect, SplatI16(256)));
}

inline I16 OuterTap(I16 product) { return ShiftRight<8>(Add(product, SplatI16(128))); }

inline I16 CentreTap(I16 sumOfProducts) {
  const I16 rest = Subtract(SplatI16(-32768), sumOfProducts);
  return ShiftRightLogical<8>(MinUnsigned(Add(rest, SplatI16(128)), SplatI16(-32768)));
}

/// Any taps. kTwoSums: the taps 4..7 have a running sum of their own.
template <bool kTwoSums>
struct AnyTaps {
  static constexpr int kSamples = 8;
  struct Weights {
    I16 tap[8];
  };
  I16 sensitivity;
  I16 coefficient[8];

  AnyTaps(const std::int16_t (&taps)[8], int edgeSensitivity) : sensitivity(SplatI16(edgeSensitivity)) {
    for (int t = 0; t < 8; ++t) coefficient[t] = SplatI16(taps[t]);
  }
  Weights Weigh(I16 before, I16 after) const {
    const I16 edgeWeight = EdgeWeight(before, after, sensitivity);
    Weights weights;
    I16 sum = SplatI16(0);
    for (int t = 0; t < 8; ++t) {
      if (t == kTapsBefore) continue;
      const I16 product = MultiplyLow(coefficient[t], edgeWeight);
      weights.tap[t] = OuterTap(product);
      sum = Add(sum, product);
    }
    weights.tap[kTapsBefore] = CentreTap(sum);
    return weights;
  }
  static I16 Sum(const I16* sample, const Weights& weights) {
    I16 product[8];
    for (int t = 0; t < 8; ++t) product[t] = MultiplyLow(sample[t], weights.tap[t]);
    I16 sum = product[0];
    for (int t = 1; t < 4; ++t) sum = AddSaturate(sum, product[t]);
    I16 second = product[4];
    if constexpr (!kTwoSums) second = AddSaturate(sum, second);
    for (int t = 5; t < 8; ++t) second = AddSaturate(second, product[t]);
    return kTwoSums ? AddSaturate(sum, second) : second;
  }
};

/// Symmetric taps, none negative, with room for the centre: all weights are at least 0, the outer ones at most 64. On
/// samples of 0..255 every product is then at least 0, so that a saturated sum does not depend on its order, nor do
/// two samples under equal weights need two products.
struct SymmetricTaps {
  static constexpr int kSamples = 7;
  struct Weights {
    I16 outer[3];
    I16 centre;
  };
  I16 sensitivity;
  I16 coefficient[3];
  I16 sumOfOuter;

  SymmetricTaps(const std::int16_t (&taps)[8], int edgeSensitivity) : sensitivity(SplatI16(edgeSensitivity)) {
    for (int t = 0; t < 3; ++t) coefficient[t] = SplatI16(taps[t]);
    sumOfOuter = SplatI16(2 * (taps[0] + taps[1] + taps[2]));
  }
  Weights Weigh(I16 before, I16 after) const {
    const I16 edgeWeight = EdgeWeight(before, after, sensitivity);
    Weights weights;
    for (int t = 0; t < 3; ++t) weights.outer[t] = OuterTap(MultiplyLow(coefficient[t], edgeWeight));
    weights.centre = CentreTap(MultiplyLow(sumOfOuter, edgeWeight));
    return weights;
  }
  static I16 Sum(const I16* sample, const Weights& weights) {
    I16 sum = MultiplyLow(sample[kTapsBefore], weights.centre);
    for (int t = 0; t < 3; ++t) {
      sum = AddSaturate(sum, MultiplyLow(Add(sample[t], sample[6 - t]), weights.outer[t]));
    }
    return sum;
  }
};

/// Filters kCount samples across an edge, from sample `first` on. Samples are counted from the edge: 0 is the first one
/// after it, -1 the last one before it. load(i) gives sample i, put(i, value) takes its result.
template <int kCount, class Taps, class Load, class Put>
inline void FilterAcrossEdge(const Taps& taps, int first, const Load& load, const Put& put) {
  const auto weights = taps.Weigh(load(-1), load(0));
  I16 sample[kCount - 1 + Taps::kSamples];
  for (int i = 0; i < kCount - 1 + Taps::kSamples; ++i) sample[i] = load(first - kTapsBefore + i);
  for (int i = 0; i < kCount; ++i) {
    const I16 sum = Taps::Sum(sample + i, weights);
    put(first + i, ShiftRight<7>(AddSaturate(sum, SplatI16(64))));
  }
}

/// Source rows as a strip needs them. The rows above it have been replaced in the frame: copies stand for them.
class SourceRows {
 public:
  explicit SourceRows(const DeblockJob& job) : job(job), keptPitch(2 * job.width + kRowSlack) {
    if (!job.testPattern) return;
    // The pattern reads no rows above a strip: their memory holds its two kinds of row.
    for (int x = 0; x < 2 * job.width; ++x) {
      const bool luma = x % 2 != 0;
      const bool odd = (x & 32) != 0;
      job.rowsAbove[x] = luma ? odd ? 205 : 215 : 128;
      job.rowsAbove[keptPitch + x] = luma ? odd ? 215 : 205 : 128;
    }
  }
  void StartStrip(int row) { firstRow = row; }
  const std::uint8_t* Row(int row) const {
    row = Clamp(row, 0, job.height - 1);
    if (job.testPattern) return job.rowsAbove + (row >> 4 & 1) * keptPitch;
    if (row < firstRow) return job.rowsAbove + (row - (firstRow - kRowsAbove)) * keptPitch;
    return job.frame + std::ptrdiff_t{row} * 2 * job.width;
  }
  /// Keeps the last rows of the strip, before it is replaced.
  void KeepRowsAbove(int nextFirstRow) const {
    if (job.testPattern || nextFirstRow >= job.height) return;
    for (int i = 0; i < kRowsAbove; ++i) {
      std::memcpy(job.rowsAbove + i * keptPitch, Row(nextFirstRow - kRowsAbove + i),
                  2 * static_cast<std::size_t>(job.width));
    }
  }

 private:
  const DeblockJob& job;
  std::ptrdiff_t keptPitch;
  int firstRow = 0;
};

/// Rows around an edge as whole vectors can read them: the sample rows themselves, or copies of rows that are shorter
/// than a vector.
template <int kCount>
class EdgeRows {
 public:
  EdgeRows(const SourceRows& source, int edge, int first, int rowBytes) : before(kTapsBefore - first) {
    for (int i = 0; i < kRows; ++i) {
      row[i] = source.Row(edge + i - before);
      if (rowBytes >= kLanes) continue;
      std::memcpy(copy[i], row[i], static_cast<std::size_t>(rowBytes));
      row[i] = copy[i];
    }
  }
  const std::uint8_t* operator[](int i) const { return row[before + i]; }

 private:
  static constexpr int kRows = kCount + 7;
  int before;
  const std::uint8_t* row[kRows];
  std::uint8_t copy[kRows][kLanes] = {};
};

/// Filters kCount rows of the strip around an edge, whose first row after it goes to `out`.
template <int kCount, class Taps>
inline void FilterEdgeRows(const Taps& taps, const SourceRows& source, int edge, int first, int rowBytes,
                           std::int16_t* out, std::ptrdiff_t pitch) {
  const EdgeRows<kCount> rows(source, edge, first, rowBytes);
  WalkSteps(rowBytes, kLanes, [&](std::ptrdiff_t b) {
    FilterAcrossEdge<kCount>(
        taps, first, [&](int i) { return LoadWiden(rows[i] + b); },
        [&](int i, I16 value) { Store(out + i * pitch + b, value); });
  });
}

/// Vertical stage: the edges at the strip's ends are filtered on the strip's side only.
template <class Taps>
inline void FilterRows(const Taps& taps, const DeblockJob& job, const SourceRows& source, int firstRow) {
  const std::ptrdiff_t pitch = job.strip.rowPitch;
  const int rowBytes = 2 * job.width;
  for (int r = 0; r <= kStripRows && firstRow + r - kReach < job.height; r += kBlock) {
    const int edge = firstRow + r;
    std::int16_t* const out = job.strip.rows + r * pitch;
    if (r == 0) {
      FilterEdgeRows<kReach>(taps, source, edge, 0, rowBytes, out, pitch);
    } else if (r == kStripRows) {
      FilterEdgeRows<kReach>(taps, source, edge, -kReach, rowBytes, out, pitch);
    } else {
      FilterEdgeRows<2 * kReach>(taps, source, edge, -kReach, rowBytes, out, pitch);
    }
    if (r == kStripRows) break;
    for (int middle = kReach; middle < kBlock - kReach; ++middle) {
      const std::uint8_t* const from = source.Row(edge + middle);
      std::int16_t* const to = out + middle * pitch;
      for (int x = 0; x < rowBytes; ++x) to[x] = from[x];
    }
  }
}

/// Horizontal stage of one component: strip.columns to strip.outColumns.
template <class Taps>
class ComponentFilter {
 public:
  ComponentFilter(const Taps& taps, const DeblockJob& job, Component component)
      : taps(taps),
        sources(job.sources),
        count((2 * job.width - component.firstByte + component.step - 1) / component.step),
        step(std::ptrdiff_t{component.step} * kStripRows),
        columns(job.strip.columns + ColumnOffset(component.firstByte)),
        outColumns(job.strip.outColumns + std::ptrdiff_t{component.firstByte} * kStripRows) {}

  /// `inPlace`: every output sample lies on its own source sample, so that six share an edge and its weights.
  void Run(bool inPlace) const {
    if (!inPlace) return FilterEach(0, count);
    FilterEach(0, count < kReach ? count : kReach);
    int edge = kBlock;
    for (; edge + kReach <= count; edge += kBlock) {
      for (int m = edge - kBlock + kReach; m < edge - kReach; ++m) Copy(m, m);
      FilterOutputs<2 * kReach>(edge, edge, -kReach);
    }
    FilterEach(edge - kBlock + kReach, count);
  }

 private:
  void FilterEach(int begin, int end) const {
    for (int m = begin; m < end; ++m) {
      const int place = m % kBlock;
      const int source = sources[m];
      if (place >= kReach && place < kBlock - kReach) {
        Copy(source, m);
      } else {
        const int first = place < kReach ? place : place - kBlock;
        FilterOutputs<1>(source - first, m - first, first);
      }
    }
  }
  void Copy(int source, int output) const {
    for (int v = 0; v < kStripRows; v += kLanes) {
      StoreNarrow(outColumns + output * step + v, LoadI16(columns + source * step + v));
    }
  }
  /// Around an edge before sample `from` of the source, which becomes one before sample `to` of the output.
  template <int kCount>
  void FilterOutputs(int from, int to, int first) const {
    for (int v = 0; v < kStripRows; v += kLanes) {
      const std::int16_t* const samples = columns + from * step + v;
      std::uint8_t* const out = outColumns + to * step + v;
      FilterAcrossEdge<kCount>(
          taps, first, [&](int i) { return LoadI16(samples + i * step); },
          [&](int i, I16 value) { StoreNarrow(out + i * step, value); });
    }
  }

  const Taps& taps;
  const std::int32_t* sources;
  int count;
  std::ptrdiff_t step;
  const std::int16_t* columns;
  std::uint8_t* outColumns;
};

inline bool KeepsPositions(const DeblockJob& job) {
  for (int m = 0; m < job.width; ++m) {
    if (job.sources[m] != m) return false;
  }
  return true;
}

template <class VerticalTaps, class HorizontalTaps>
void Filter(const DeblockJob& job) {
  const VerticalTaps verticalTaps(job.verticalTaps, job.edgeSensitivity);
  const HorizontalTaps horizontalTaps(job.horizontalTaps, job.edgeSensitivity);
  const bool inPlace = KeepsPositions(job);
  const int rowBytes = 2 * job.width;
  SourceRows source(job);
  for (int firstRow = 0; firstRow < job.height; firstRow += kStripRows) {
    source.StartStrip(firstRow);
    FilterRows(verticalTaps, job, source, firstRow);
    source.KeepRowsAbove(firstRow + kStripRows);
    RowsToColumns(job.strip, rowBytes);
    for (const Component component : kComponents) {
      ComponentFilter<HorizontalTaps>(horizontalTaps, job, component).Run(inPlace);
    }
    const int rowCount = job.height - firstRow < kStripRows ? job.height - firstRow : kStripRows;
    ColumnsToRows(job.strip.outColumns, kStripRows, rowBytes, rowCount, job.frame + std::ptrdiff_t{firstRow} * rowBytes,
                  rowBytes);
  }
}

}  // namespace

void Deblock(const DeblockJob& job) {
  if (job.form == Form::kProven) {
    Filter<SymmetricTaps, SymmetricTaps>(job);
  } else {
    Filter<AnyTaps<false>, AnyTaps<true>>(job);
  }
}

}  // namespace vidproc::VIDPROC_TARGET
