// Motion smoothing: the adaptive pre-filter, with the edge preservation switched off for samples that have moved since
// the previous frame, so that moving areas get the full low-pass.
//
// kept: the tests look up the previous source at the output row's own index, and the previous vertical result at the
// output column's own index, not at those of the centre tap.
#include "passes/byte_strip.h"
#include "passes/strip_driver.h"
#include "simd/kernel_table.h"

namespace vidproc::VIDPROC_TARGET {

void MotionSmoothingScale(const ScaleJob& job) {
#if VIDPROC_HAS_BYTE_OPS
  if (job.adaptsInBytes) return RunByteStripsWithHistory<4, 8, RowMotionGate, ColumnMotionGate>(job);
#endif
  const AdaptiveTaps<OpenWhereStill> taps{job.adaptiveShift, {}};
  const VerticalScale<4, 7, AdaptiveTaps<OpenWhereStill>> vertical{taps};
  WithHistory(job, [&](const auto& result) { RunStrips(job, vertical, ScaleRows<8, 7>(taps, result)); });
}

}  // namespace vidproc::VIDPROC_TARGET
