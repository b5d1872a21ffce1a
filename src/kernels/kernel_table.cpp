// The table of this instruction set's kernels: the only thing that the common code sees of them.
#include "kernels/kernel_table.h"

#include "simd/simd.h"

namespace vidproc::VIDPROC_TARGET {

constinit const KernelTable kKernels = {
    .byteRowShape = {kHasByteShuffle ? kVectorBytes : 0, kHasByteShuffle ? kWindowBytes : 0},
    .plainScale = PlainScale,
    .plainScaleWithLumaShift = PlainScaleWithLumaShift,
    .adaptiveScale = AdaptiveScale,
    .motionSmoothingScale = MotionSmoothingScale,
    .adaptive16TapScale = Adaptive16TapScale,
    .postScale = PostScale,
    .deblock = Deblock,
    .temporalFilter = TemporalFilter,
    .addNoiseToRow = AddNoiseToRow,
    .addNoise = AddNoise,
    .interleaveRow = InterleaveRow,
    .splitRow = SplitRow,
    .filterRowsVertically = FilterRowsVertically,
    .scaleRow = ScaleRow,
    .denoiseRowVertically = DenoiseRowVertically,
    .denoiseRowHorizontally = DenoiseRowHorizontally,
    .repeatEdges = RepeatRowEdges,
    .shiftLumaRow = ShiftLumaRow,
    .addNoiseToLumaRow = AddNoiseToLumaRow,
    .rememberBlocks = RememberBlocks,
    .measureBlocks = MeasureBlocks,
};

}  // namespace vidproc::VIDPROC_TARGET
