// The scalers whose taps weigh the same everywhere: row by row in bytes where the plan has found that exact, else in
// strips of 16-bit values.
#pragma once

#include "kernels/passes/row_form.h"
#include "kernels/passes/strip_driver.h"

namespace vidproc::VIDPROC_TARGET {
namespace {

/// Banks of kShift bits; luma goes through a policy of its own.
template <int kShift, class LumaResult>
inline void ScalePlainly(const ScaleJob& job, const LumaResult& lumaResult) {
#if VIDPROC_HAS_BYTE_OPS
  if (job.byteRowPlan != nullptr) return RunRows<kShift>(job, lumaResult);
#endif
  RunStrips(job, VerticalScale<4, kShift, PlainTaps>{},
            HorizontalScale<8, kShift, PlainTaps, LumaResult, ClampResult>{{}, lumaResult, {}});
}

}  // namespace
}  // namespace vidproc::VIDPROC_TARGET
