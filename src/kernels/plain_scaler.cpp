// Plain polyphase scaler of the pre-processor, and its form with luma gain and offset.
//
//   vertical    v = (c0 s0 + c1 s1 + c2 s2 + c3 s3 + 64) >> 7, source rows i - 1 .. i + 2
//   horizontal  h = ((taps 0..3) + (taps 4..7) + 64) >> 7, component samples i - 3 .. i + 4
//   luma shift  y = ((h - offset) * gain) >> 6, luma only
//
// 16-bit lanes: products keep their low half, additions saturate, v is not clamped, results clamp to 0..255.
#include "kernels/kernel_table.h"
#include "kernels/passes/plain_scale.h"

namespace vidproc::VIDPROC_TARGET {

void PlainScale(const ScaleJob& job) { ScalePlainly<kPlainTraits>(job, ClampResult{}); }

void PlainScaleWithLumaShift(const ScaleJob& job) {
  ScalePlainly<kPlainTraits>(job, LumaShiftResult{SplatI16(job.lumaGain), SplatI16(job.lumaOffset)});
}

}  // namespace vidproc::VIDPROC_TARGET
