#include "pipeline/processor_step.h"

#include "kernels/kernel_traits.h"
#include "pipeline/axis_pass.h"

namespace vidproc {
namespace {

constexpr short kNeutralGain = 64;

/// Stands for the noise table, which the object would else make and never release; without noise nothing reads it.
signed char noNoise = 0;

}  // namespace

bool ProcessorStep::Serves(const PipelineSettings& settings) {
  const ScalingSettings& scaling = settings.scaling;
  return scaling.alignment == Alignment::kCorners && HasFixedWidth(scaling.filter) &&
         (settings.role == Role::kPreProcessor || scaling.taps == 8);
}

ProcessorStep::ProcessorStep(const PipelineSettings& settings, const PictureRows& rows, const KernelTable& kernels)
    : WholeFrameStep(settings.input.width, 2 * settings.input.width, rows, kernels),
      processor(settings.role == Role::kPreProcessor, settings.scaling.softening),
      result(2 * settings.output.width, settings.output.height) {
  processor.inWidth = static_cast<std::uint32_t>(settings.input.width);
  processor.inHeight = static_cast<std::uint32_t>(settings.input.height);
  processor.inStride = 2 * processor.inWidth;
  processor.outWidth = static_cast<std::uint32_t>(settings.output.width);
  processor.outHeight = static_cast<std::uint32_t>(settings.output.height);
  processor.outStride = 2 * processor.outWidth;
  processor.windowKind = KindOf(settings.scaling.filter);
  processor.lanczosLobes = static_cast<std::uint32_t>(settings.scaling.lobes);
  processor.SetTaps(settings.scaling.taps == 16 ? 1 : 0);
  processor.ditherLevel = 0;
  processor.ditherTable = &noNoise;
  const KernelTraits& traits = settings.role == Role::kPreProcessor ? kPlainTraits : kPostTraits;
  processor.SetEnhanceFilter(EnhanceLaplacian4, static_cast<unsigned>(settings.scaling.sharpening),
                             static_cast<unsigned>(traits.precisionBits), kNeutralGain, 0);
}

const PackedFrame& ProcessorStep::Work(PackedFrame& frame) {
  processor.srcFrame = frame.bytes.data();
  processor.dstFrame = result.bytes.data();
  if (processor.isPreProcessor == 0) {
    processor.PostProcExecute();
  } else if (processor.use16Taps != 0) {
    processor.PreProcAdaptive16TapExecute();  // not adaptive: every tap keeps its weight
  } else {
    processor.PreProcExecute();
  }
  return result;
}

}  // namespace vidproc
