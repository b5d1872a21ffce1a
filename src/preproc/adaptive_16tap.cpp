// Adaptive scaler with 8 vertical and 16 horizontal taps, with and without the blend with the previous output. Weights
// and blend are those of the adaptive pre-filter; taps reach from 3 rows before to 4 after, and from 7 samples to 8.
#include "passes/byte_strip.h"
#include "passes/strip_driver.h"
#include "simd/kernel_table.h"

namespace vidproc::VIDPROC_TARGET {
namespace {

template <class Result>
void Scale(const ScaleJob& job, const Result& result) {
  const AdaptiveTaps<AlwaysOpen> taps{job.adaptiveShift, {}};
  RunStrips(job, VerticalScale<8, 7, AdaptiveTaps<AlwaysOpen>>{taps}, ScaleRows<16, 7>(taps, result));
}

}  // namespace

void Adaptive16TapTemporalScale(const ScaleJob& job) {
#if VIDPROC_HAS_BYTE_OPS
  if (job.adaptsInBytes) return RunByteStripsWithHistory<8, 16, NoByteGate, NoByteGate>(job);
#endif
  WithHistory(job, [&](const auto& result) { Scale(job, result); });
}

void Adaptive16TapScale(const ScaleJob& job) {
#if VIDPROC_HAS_BYTE_OPS
  if (job.adaptsInBytes) return RunByteStrips<8, 16, NoByteGate, NoByteGate>(job, StoreBytes{});
#endif
  Scale(job, ClampResult{});
}

}  // namespace vidproc::VIDPROC_TARGET
