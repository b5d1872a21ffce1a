// The table of this instruction set's kernels: the only thing that the common code sees of them.
#include "simd/kernel_table.h"

namespace vidproc::VIDPROC_TARGET {

constinit const KernelTable kKernels = {
    .plainScale = PlainScale,
    .plainScaleWithLumaShift = PlainScaleWithLumaShift,
    .adaptiveScale = AdaptiveScale,
    .motionSmoothingScale = MotionSmoothingScale,
    .adaptive16TapTemporalScale = Adaptive16TapTemporalScale,
    .adaptive16TapScale = Adaptive16TapScale,
    .postScale = PostScale,
    .deblock = Deblock,
    .temporalFilter = TemporalFilter,
    .addNoiseToRow = AddNoiseToRow,
    .addNoise = AddNoise,
    .interleaveRow = InterleaveRow,
    .splitRow = SplitRow,
    .measureBlocks = MeasureBlocks,
};

}  // namespace vidproc::VIDPROC_TARGET
