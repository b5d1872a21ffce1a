// Horizontal pass: filters down the columns of a transposed strip, each colour component on its own sample grid, and
// leaves one column of bytes per output byte. Outputs that share a phase are made one after the other, with the phase's
// coefficients in registers.
#pragma once

#include "kernels/passes/result_policy.h"
#include "kernels/passes/tap_weighting.h"
#include "kernels/passes/transposes.h"
#include "kernels/scale_job.h"

namespace vidproc::VIDPROC_TARGET {
namespace {

/// A colour component's first byte in a row and the bytes from sample to sample.
struct Component {
  int firstByte;
  int step;
};
constexpr Component kCb{0, 4};
constexpr Component kY{1, 2};
constexpr Component kCr{2, 4};
constexpr Component kComponents[] = {kCb, kY, kCr};

/// What the pass leaves behind, byte columns `stride` bytes apart, and what its motion test compares with: the previous
/// vertical result, 16-bit columns `previousVerticalStride` values apart; null where the kernel has no motion test.
struct StripResult {
  std::uint8_t* columns;
  std::ptrdiff_t stride;
  const std::int16_t* previousVertical;
  std::ptrdiff_t previousVerticalStride;

  const std::int16_t* PreviousVertical(std::ptrdiff_t column) const {
    return previousVertical == nullptr ? nullptr : previousVertical + column * previousVerticalStride;
  }
};

/// Which of the two running sums takes tap t. Of 16 taps, groups of four alternate. Of 8 taps, the first four belong to
/// one sum and the last four to the other; fewer than 8 are what is left without the outermost taps of both sides.
template <int kTaps>
constexpr int SumOfTap(int t) {
  return kTaps > 8 ? t / 4 % 2 : 2 * t / kTaps;
}

/// Weighted sum of kTaps samples in two running sums, rounded and shifted; every addition saturates.
template <int kTaps, int kShift>
inline I16 SumInGroups(const I16 (&sample)[kTaps], const I16 (&weight)[kTaps]) {
  constexpr int kSecond = kTaps > 8 ? 4 : kTaps / 2;
  I16 sum[2];
  for (int t = 0; t < kTaps; ++t) {
    const I16 product = MultiplyLow(sample[t], weight[t]);
    I16& group = sum[SumOfTap<kTaps>(t)];
    group = t == 0 || t == kSecond ? product : AddSaturate(group, product);
  }
  const I16 total = kTaps > 1 ? AddSaturate(sum[0], sum[1]) : sum[0];
  return ShiftRight<kShift>(AddSaturate(total, SplatI16(1 << (kShift - 1))));
}

/// Some outputs of one component that share a phase.
struct OutputRun {
  const TapPosition* positions;
  int count;
  Component component;
};

inline const ColumnPlan& ColumnsOf(const ScaleJob& job, Component component) {
  return component.step == kY.step ? *job.lumaColumns : *job.chromaColumns;
}

inline OutputRun MakeOutputRun(const ScaleJob& job, const PhaseRun& phase, Component component) {
  const TapPosition* const positions = ColumnsOf(job, component).positions + phase.first;
  // A row of odd width ends with a Cb that has no Cr.
  const int last = positions[phase.count - 1].output * component.step + component.firstByte;
  return {positions, last >= 2 * job.outWidth ? phase.count - 1 : phase.count, component};
}

/// Filters the outputs of a run. Tap number `centre` lies on an output's source position.
template <int kTaps, int kShift, class Taps, class Result>
inline void FilterRun(const StripMemory& strip, const OutputRun& run, const std::int16_t* coefficients, int centre,
                      const Taps& taps, const Result& result, const StripResult& out) {
  I16 coefficient[kTaps];
  for (int t = 0; t < kTaps; ++t) coefficient[t] = SplatI16(coefficients[t]);
  const std::ptrdiff_t tapStep = std::ptrdiff_t{run.component.step} * kStripRows;
  const std::int16_t* samples = strip.columns + ColumnOffset(run.component.firstByte) - centre * tapStep;
  for (int k = 0; k < run.count; ++k) {
    const std::int16_t* first = samples + run.positions[k].source * tapStep;
    const std::ptrdiff_t column =
        std::ptrdiff_t{run.positions[k].output} * run.component.step + run.component.firstByte;
    const Taps columnTaps = taps.WithPrevious(out.PreviousVertical(column));
    for (int v = 0; v < kColumnVectors; ++v) {
      I16 sample[kTaps];
      I16 weight[kTaps];
      for (int t = 0; t < kTaps; ++t) sample[t] = LoadI16(first + t * tapStep + v * kLanes);
      columnTaps.Weigh(sample, coefficient, v * kLanes, weight);
      result.Put(out.columns + column * out.stride + v * kLanes, SumInGroups<kTaps, kShift>(sample, weight));
    }
  }
}

/// Stage of the strip driver: scales rows with kTaps horizontal taps.
template <int kTaps, int kShift, class Taps, class LumaResult, class ChromaResult = LumaResult>
struct HorizontalScale {
  Taps taps;
  LumaResult lumaResult;
  ChromaResult chromaResult;

  void operator()(const ScaleJob& job, const StripResult& out) const {
    FilterComponent(job, kCb, chromaResult, out);
    FilterComponent(job, kY, lumaResult, out);
    FilterComponent(job, kCr, chromaResult, out);
  }

 private:
  template <class Result>
  void FilterComponent(const ScaleJob& job, Component component, const Result& result, const StripResult& out) const {
    const ColumnPlan& columns = ColumnsOf(job, component);
    for (int i = 0; i < columns.runCount; ++i) {
      const PhaseRun& phase = columns.runs[i];
      FilterPhase(job, MakeOutputRun(job, phase, component), phase.phase, result, out);
    }
  }

  /// Plain taps leave out zero taps at both ends, as many before the centre as after it: all others keep their sum.
  template <class Result>
  void FilterPhase(const ScaleJob& job, const OutputRun& run, int phase, const Result& result,
                   const StripResult& out) const {
    constexpr int kCentre = kTaps / 2 - 1;
    const TapBank& bank = *job.horizontalBank;
    const std::int16_t* coefficients = bank.coefficient[phase];
    if constexpr (Taps::kSkipsZeroTaps) {
      const int before = kCentre - bank.firstTap[phase];
      const int after = bank.firstTap[phase] + bank.tapCount[phase] - 1 - kCentre;
      const int reach = before + 1 > after ? before + 1 : after;
      const StripMemory& strip = job.strip;
      if (before == 0 && after == 0) {
        return FilterRun<1, kShift>(strip, run, coefficients + kCentre, 0, taps, result, out);
      }
      if (reach <= 1) return FilterRun<2, kShift>(strip, run, coefficients + kCentre, 0, taps, result, out);
      if (reach <= 2) return FilterRun<4, kShift>(strip, run, coefficients + kCentre - 1, 1, taps, result, out);
      if (reach <= 3) return FilterRun<6, kShift>(strip, run, coefficients + kCentre - 2, 2, taps, result, out);
    }
    FilterRun<kTaps, kShift>(job.strip, run, coefficients, kCentre, taps, result, out);
  }
};

}  // namespace
}  // namespace vidproc::VIDPROC_TARGET
