// The byte column scaler: the stages of the adaptive scalers on strips of bytes.
#pragma once

#include "compiler/compiler.h"
#include "kernels/passes/byte_adaptive_taps.h"
#include "kernels/passes/strip_driver.h"

namespace vidproc::VIDPROC_TARGET {
namespace {

/// Stores the filtered bytes as they are.
struct StoreBytes {
  void Put(std::uint8_t* out, U8 value) const { Store(out, value); }
};

/// Blends with the history bytes that the result replaces.
struct BlendBytes {
  ByteBlend blend;
  BlendBytes(int strength, int shift) : blend(FindHistorySteps(strength, shift)) {}
  void Put(std::uint8_t* history, U8 value) const { Store(history, blend.Blend(LoadU8(history), value)); }
};

/// A strip as columns of bytes, one vector each.
struct ByteColumns {
  static constexpr int kRows = kVectorBytes;

  static std::uint8_t* Rows(const StripMemory& strip) { return reinterpret_cast<std::uint8_t*>(strip.rows); }
  static std::uint8_t* Column(const StripMemory& strip, std::ptrdiff_t byteColumn) {
    return reinterpret_cast<std::uint8_t*>(strip.columns) + (kEdgeColumns + byteColumn) * kRows;
  }

  static void ToColumns(const StripMemory& strip, int rowBytes) {
    const std::uint8_t* const rows = Rows(strip);
    for (int c = 0; c < rowBytes; c += 16) {
      U8 block[16];
      for (int i = 0; i < 16; ++i) block[i] = LoadTilesU8(rows + i * strip.rowPitch + c, 16 * strip.rowPitch);
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
      if (c + 8 < 2 * job.inWidth) PrefetchToWrite(to + std::ptrdiff_t{8} * job.outHeight);
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
    DenoiseTaps outer{};
    int phase = -1;
    for (int r = 0; r < rowCount; ++r) {
      const PhasePosition position = job.rowPositions[firstRow + r];
      if (position.phase != phase) {
        phase = position.phase;
        outer = FindDenoiseTaps(job.verticalBank->coefficient[phase], kTaps, shift);
      }
      const std::uint8_t* rows[kMaxTaps];
      for (int k = 0; k < kMaxTaps; ++k) rows[k] = SourceRow(job, position.source + outer.offset[k]);
      const std::uint8_t* const centre = SourceRow(job, position.source);
      const std::uint8_t* const ahead = SourceRow(job, position.source + kTaps);
      const MotionTest rowTest = motionTest.WithPrevious(PreviousInputRow(job, firstRow + r));
      std::uint8_t* const out = ByteColumns::Rows(job.strip) + r * job.strip.rowPitch;
      WithByteTaps(outer,
                   [&](const auto& taps) { FilterRowAdaptively(taps, rowTest, rows, centre, ahead, bytes, out); });
    }
  }
};

template <int kTaps, class MotionTest, class Result>
struct ByteHorizontalScale {
  int shift;
  MotionTest motionTest;
  Result result;

  void operator()(const ScaleJob& job, const StripResult& out) const {
    const ComponentsOfColumns groups[] = {{*job.chromaColumns, {kCb, kCr}, 2}, {*job.lumaColumns, {kY}, 1}};
    for (const ComponentsOfColumns& group : groups) {
      for (int i = 0; i < group.columns.runCount; ++i) FilterPhase(job, group, group.columns.runs[i], out);
    }
  }

 private:
  static constexpr int kAhead = 8;  // outputs, for prefetches

  /// What shares its taps.
  struct ComponentsOfColumns {
    const ColumnPlan& columns;
    Component components[2];
    int count;
  };

  void FilterPhase(const ScaleJob& job, const ComponentsOfColumns& group, const PhaseRun& phase,
                   const StripResult& out) const {
    const DenoiseTaps outer = FindDenoiseTaps(job.horizontalBank->coefficient[phase.phase], kTaps, shift);
    WithByteTaps(outer, [&](const auto& taps) {
      for (int i = 0; i < group.count; ++i) {
        FilterRun(taps, outer, job.strip, MakeOutputRun(job, phase, group.components[i]), out);
      }
    });
  }

  template <int kOuter>
  void FilterRun(const ByteTaps<kOuter>& taps, const DenoiseTaps& outer, const StripMemory& strip, const OutputRun& run,
                 const StripResult& out) const {
    const std::ptrdiff_t step = run.component.step;
    for (int k = 0; k < run.count; ++k) {
      const std::uint8_t* const centre =
          ByteColumns::Column(strip, run.positions[k].source * step + run.component.firstByte);
      const std::ptrdiff_t column = run.positions[k].output * step + run.component.firstByte;
      // Columns of the history lie a frame's height apart, too far for hardware to foresee.
      const std::ptrdiff_t later =
          run.positions[k + kAhead < run.count ? k + kAhead : k].output * step + run.component.firstByte;
      Prefetch(out.columns + later * out.stride);
      if (out.previousVertical != nullptr) Prefetch(out.PreviousVertical(later));
      U8 sample[kOuter + 1];
      for (int t = 0; t < kOuter; ++t) sample[t] = LoadU8(centre + outer.offset[t] * step * ByteColumns::kRows);
      const MotionTest columnTest = motionTest.WithPrevious(out.PreviousVertical(column));
      result.Put(out.columns + column * out.stride, taps.Filter(LoadU8(centre), sample, columnTest, 0));
    }
  }
};

template <int kTaps, class MotionTest, class Result>
inline ByteHorizontalScale<kTaps, MotionTest, Result> ScaleByteRows(int shift, const Result& result) {
  return {shift, {}, result};
}

}  // namespace
}  // namespace vidproc::VIDPROC_TARGET
