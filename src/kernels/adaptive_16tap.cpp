// Adaptive scaler with 8 vertical and 16 horizontal taps, with the blend with the previous output where the job has a
// history. Weights and blend are those of the adaptive pre-filter; taps reach from 3 rows before to 4 after, and from 7
// samples to 8.
#include "kernels/kernel_table.h"
#include "kernels/passes/adaptive_scale.h"
#include "kernels/passes/plain_scale.h"

namespace vidproc::VIDPROC_TARGET {

void Adaptive16TapScale(const ScaleJob& job) {
  if constexpr (kHasByteShuffle) {
    // Taps that lose no weight weigh the same everywhere.
    const bool losesNoWeight = job.adaptiveShift >= kClearingShift;
    if (job.form == Form::kProven && losesNoWeight) return RunRows<kAdaptive16TapTraits>(job, ClampResult{});
  }
  ScaleAdaptively<kAdaptive16TapTraits>(job);
}

}  // namespace vidproc::VIDPROC_TARGET
