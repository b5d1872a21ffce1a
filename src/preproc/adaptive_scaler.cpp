// Adaptive pre-filter: the plain scaler with edge-preserving taps and a blend with the previous output.
//
//   weights   of tap t against the centre tap's sample: (w(s_t - s_c) c_t + 128) >> 8; the centre takes 128 minus the
//   rest result    ((128 - a) h + a p + 64) >> 7 with the history byte p, a = (w(p - h) strength + 128) >> 8; first
//   frame: h
//
// The history is the blended result before the noise, transposed; each byte is blended with what it replaces.
#include "passes/byte_strip.h"
#include "passes/strip_driver.h"
#include "simd/kernel_table.h"

namespace vidproc::VIDPROC_TARGET {

void AdaptiveScale(const ScaleJob& job) {
#if VIDPROC_HAS_BYTE_OPS
  if (job.adaptsInBytes) return RunByteStripsWithHistory<4, 8, NoByteGate, NoByteGate>(job);
#endif
  const AdaptiveTaps<AlwaysOpen> taps{job.adaptiveShift, {}};
  const VerticalScale<4, 7, AdaptiveTaps<AlwaysOpen>> vertical{taps};
  WithHistory(job, [&](const auto& result) { RunStrips(job, vertical, ScaleRows<8, 7>(taps, result)); });
}

}  // namespace vidproc::VIDPROC_TARGET
