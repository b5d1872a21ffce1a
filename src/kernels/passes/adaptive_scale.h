// The edge-preserving scalers: taps lose weight as their sample differs from the centre's, where the motion tests find
// rest. The result is blended with the previous output, where there is one.
#pragma once

#include "kernels/kernel_traits.h"
#include "kernels/passes/byte_column_scaler.h"
#include "kernels/passes/strip_driver.h"

namespace vidproc::VIDPROC_TARGET {
namespace {

/// Calls scale with the result policy: Plain in a first frame or without a history, else Blend.
template <class Plain, class Blend, class Scale>
inline void WithHistory(const ScaleJob& job, const Scale& scale) {
  if (job.history == nullptr || job.firstFrame) return scale(Plain{});
  scale(Blend{job.temporalStrength, job.temporalShift});
}

template <const KernelTraits& kTraits>
inline void ScaleAdaptively(const ScaleJob& job) {
  using RowTest = typename MotionTests<kTraits.smoothsMotion>::Row;
  using ColumnTest = typename MotionTests<kTraits.smoothsMotion>::Column;
  const int shift = job.adaptiveShift;
  if constexpr (kHasByteShuffle) {
    if (job.form == Form::kProven) {
      const ByteVerticalScale<kTraits.verticalTaps, RowTest> vertical{shift, {}};
      return WithHistory<StoreBytes, BlendBytes>(job, [&](const auto& result) {
        RunStrips<ByteColumns>(job, vertical, ScaleByteRows<kTraits.horizontalTaps, ColumnTest>(shift, result));
      });
    }
  }
  const VerticalScale<kTraits.verticalTaps, kTraits.precisionBits, AdaptiveTaps<RowTest>> vertical{{shift, {}}};
  WithHistory<ClampResult, BlendResult>(job, [&](const auto& result) {
    RunStrips(job, vertical,
              ScaleRows<kTraits.horizontalTaps, kTraits.precisionBits>(AdaptiveTaps<ColumnTest>{shift, {}}, result));
  });
}

}  // namespace
}  // namespace vidproc::VIDPROC_TARGET
