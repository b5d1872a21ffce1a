// Scaling by the processor object's own kernels, for what is defined as theirs: kernels of a given width, counted from
// the corner.
#pragma once

#include "pipeline/pipeline.h"
#include "pipeline/whole_frame_step.h"
#include "vidproc/video_processor.h"

namespace vidproc {

class ProcessorStep : public WholeFrameStep {
 public:
  /// Whether settings are of that kind. There is no post-processor of 16 taps.
  static bool Serves(const PipelineSettings& settings);

  /// `rows` has as many rows of chroma as of luma. @throws std::bad_alloc
  ProcessorStep(const PipelineSettings& settings, const PictureRows& rows, const KernelTable& kernels);

 protected:
  const PackedFrame& Work(PackedFrame& frame) override;

 private:
  VideoProcessor processor;
  PackedFrame result;
};

}  // namespace vidproc
