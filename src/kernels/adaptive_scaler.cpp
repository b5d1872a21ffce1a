// Adaptive pre-filter: the plain scaler with edge-preserving taps and a blend with the previous output.
//
//   weights   a_t = (w(s_t - s_c) c_t + 128) >> 8 of tap t, whose sample is s_t; the centre c takes 128 minus theirs
//   result    ((128 - a) h + a p + 64) >> 7 of the filtered h and the history byte p; in a first frame h itself
//             a = (w(p - h) strength + 128) >> 8
//
// The history is the blended result before the noise, transposed; each byte is blended with what it replaces.
#include "kernels/kernel_table.h"
#include "kernels/passes/adaptive_scale.h"

namespace vidproc::VIDPROC_TARGET {

void AdaptiveScale(const ScaleJob& job) { ScaleAdaptively<kAdaptiveTraits>(job); }

}  // namespace vidproc::VIDPROC_TARGET
