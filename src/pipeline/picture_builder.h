// Puts together the stages that a frame's settings ask for.
#pragma once

#include <memory>
#include <utility>
#include <vector>

#include "kernels/kernel_table.h"
#include "pipeline/axis_pass.h"
#include "pipeline/denoise_stage.h"
#include "pipeline/frame_sink.h"
#include "pipeline/pipeline.h"
#include "pipeline/source_stages.h"
#include "pipeline/whole_frame_step.h"

namespace vidproc {

/// The stages of a frame's components, from the planes of the input on.
class PictureBuilder {
 public:
  /// @throws std::bad_alloc, as do all that follow but UseDenoiseStep
  PictureBuilder(const PipelineSettings& settings, const KernelTable& kernels);

  void AddSources();
  void AddDeblocking();
  void AddDenoising();
  void AddScaling();
  void AddLumaFinish();
  /// Whether no stage has anything to do, and the output is of the input's shape.
  bool ChangesNothing() const;
  /// Chooses a step of the ladder of denoising settings for the frames to come.
  void UseDenoiseStep(std::size_t step);

  std::vector<std::unique_ptr<Stage>> stages;  ///< inputs first
  std::vector<std::unique_ptr<WholeFrameStep>> wholeFrameSteps;
  PlaneSource* sources[3] = {};     ///< of the input's planes
  DenoiseStage* denoisers[3] = {};  ///< the first pass, which keeps the history: of luma; of pairs, or of Cb and Cr
  PictureRows rows;                 ///< the last stages so far

 private:
  template <class StageType, class... Arguments>
  StageType& Add(Arguments&&... arguments) {
    auto stage = std::make_unique<StageType>(std::forward<Arguments>(arguments)...);
    StageType& added = *stage;
    stages.push_back(std::move(stage));
    return added;
  }
  AxisRequest HorizontalAxis(bool isLuma) const;
  AxisRequest VerticalAxis(bool isLuma) const;
  void AddPackedSource();
  /// Luma and pairs of packed rows from a plane of whole pairs.
  void Split(Stage& packed, std::int32_t width, PackedOrder order);
  /// The same of a frame whose chroma rows are fewer, but lie on top.
  void SplitApart(Stage& packed, std::int32_t width, std::int32_t chromaRows);
  std::int32_t RowsThatLumaLeads() const;
  template <class RowOf>
  void PickChromaRows(std::int32_t count, const RowOf& rowOf);
  void ScaleByProcessor();
  void AddDenoisingPass(const DenoisePlans& plans);
  bool NeedsPass(bool isLuma) const;
  Stage* AddPass(Stage* input, const AxisRequest& axis, bool isVertical, std::int32_t number);
  Stage* ScaleComponent(Stage* input, bool isLuma);

  const PipelineSettings& settings;
  const KernelTable& kernels;
  std::vector<DenoisePlans> denoisePlans;    ///< of each pass
  std::vector<DenoiseStage*> denoiseStages;  ///< of all passes
  bool hasFirstVerticalPass = false;         ///< the packed rows have gone through it
};

}  // namespace vidproc
