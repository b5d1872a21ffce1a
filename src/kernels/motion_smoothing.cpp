// Motion smoothing: the adaptive pre-filter, with the edge preservation switched off for samples that have moved since
// the previous frame, so that moving areas get the full low-pass.
//
// kept: the tests look up the previous source at the output row's own index, and the previous vertical result at the
// output column's own index, not at those of the centre tap.
#include "kernels/kernel_table.h"
#include "kernels/passes/adaptive_scale.h"

namespace vidproc::VIDPROC_TARGET {

void MotionSmoothingScale(const ScaleJob& job) { ScaleAdaptively<kMotionSmoothingTraits>(job); }

}  // namespace vidproc::VIDPROC_TARGET
