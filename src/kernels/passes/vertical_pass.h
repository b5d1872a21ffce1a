// Vertical pass: filters the source rows under each row of a strip into 16-bit values, one per byte of a source row.
// Luma and chroma bytes are treated alike. Rows beyond the frame repeat its first or last row.
#pragma once

#include "kernels/passes/tap_weighting.h"
#include "kernels/passes/vector_walk.h"
#include "kernels/scale_job.h"

namespace vidproc::VIDPROC_TARGET {
namespace {

/// Weighted sum of kTaps samples in tap order, rounded and shifted; every addition saturates.
template <int kTaps, int kShift>
inline I16 SumInOrder(const I16 (&sample)[kTaps], const I16 (&weight)[kTaps]) {
  I16 sum = MultiplyLow(sample[0], weight[0]);
  for (int t = 1; t < kTaps; ++t) sum = AddSaturate(sum, MultiplyLow(sample[t], weight[t]));
  return ShiftRight<kShift>(AddSaturate(sum, SplatI16(1 << (kShift - 1))));
}

/// One output row: out[b] from byte b of kTaps source rows, b below `bytes`.
template <int kTaps, int kShift, class Taps>
inline void FilterRow(const std::uint8_t* const* rows, const std::int16_t* coefficients, int bytes, const Taps& taps,
                      std::int16_t* out) {
  I16 coefficient[kTaps];
  for (int t = 0; t < kTaps; ++t) coefficient[t] = SplatI16(coefficients[t]);
  WalkSteps(bytes, kLanes, [&](std::ptrdiff_t b) {
    I16 sample[kTaps];
    I16 weight[kTaps];
    for (int t = 0; t < kTaps; ++t) sample[t] = LoadWiden(rows[t] + b);
    taps.Weigh(sample, coefficient, b, weight);
    Store(out + b, SumInOrder<kTaps, kShift>(sample, weight));
  });
}

/// The source row under an output row, repeated beyond the frame.
inline const std::uint8_t* SourceRow(const ScaleJob& job, int row) {
  return job.source + Clamp(row, 0, job.inHeight - 1) * job.sourceStride;
}

/// What the motion test of an output row compares with; null where the kernel has none.
inline const std::uint8_t* PreviousInputRow(const ScaleJob& job, int row) {
  return job.previousInput == nullptr ? nullptr : job.previousInput + row * job.previousInputStride;
}

/// Stage of the strip driver: scales columns with kTaps vertical taps.
template <int kTaps, int kShift, class Taps>
struct VerticalScale {
  Taps taps;

  void operator()(const ScaleJob& job, int firstRow, int rowCount) const {
    for (int r = 0; r < rowCount; ++r) {
      const PhasePosition position = job.rowPositions[firstRow + r];
      const TapBank& bank = *job.verticalBank;
      const int skipped = Taps::kSkipsZeroTaps ? bank.firstTap[position.phase] : 0;
      const int count = Taps::kSkipsZeroTaps ? bank.tapCount[position.phase] : kTaps;
      const std::uint8_t* rows[kTaps];
      for (int t = 0; t < kTaps; ++t) rows[t] = SourceRow(job, position.source - (kTaps / 2 - 1) + skipped + t);
      const std::int16_t* coefficients = bank.coefficient[position.phase] + skipped;
      const std::ptrdiff_t rowBytes = std::ptrdiff_t{2} * job.inWidth;
      FilterRowOf(count, rows, coefficients, static_cast<int>(rowBytes),
                  taps.WithPrevious(PreviousInputRow(job, firstRow + r)), job.strip.rows + r * job.strip.rowPitch);
    }
  }

 private:
  /// Zero taps at either end change no saturated sum: plain taps leave them out.
  static void FilterRowOf(int count, const std::uint8_t* const* rows, const std::int16_t* coefficients, int bytes,
                          const Taps& taps, std::int16_t* out) {
    if constexpr (Taps::kSkipsZeroTaps) {
      if (count == 1) return FilterRow<1, kShift>(rows, coefficients, bytes, taps, out);
      if (count == 2) return FilterRow<2, kShift>(rows, coefficients, bytes, taps, out);
      if (count == 3) return FilterRow<3, kShift>(rows, coefficients, bytes, taps, out);
      if (count == 4) return FilterRow<4, kShift>(rows, coefficients, bytes, taps, out);
    }
    FilterRow<kTaps, kShift>(rows, coefficients, bytes, taps, out);
  }
};

}  // namespace
}  // namespace vidproc::VIDPROC_TARGET
