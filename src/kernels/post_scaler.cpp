// Polyphase scaler of the post-processor: the plain scaler with banks of 6-bit precision.
//
//   vertical    v = (c0 s0 + c1 s1 + c2 s2 + c3 s3 + 32) >> 6, source rows i - 1 .. i + 2
//   horizontal  h = ((taps 0..3) + (taps 4..7) + 32) >> 6, component samples i - 3 .. i + 4
#include "kernels/kernel_table.h"
#include "kernels/passes/plain_scale.h"

namespace vidproc::VIDPROC_TARGET {

void PostScale(const ScaleJob& job) { ScalePlainly<kPostTraits>(job, ClampResult{}); }

}  // namespace vidproc::VIDPROC_TARGET
