#include "pipeline/pipeline.h"

#include <optional>

#include "noise_estimate/noise_estimator.h"
#include "pipeline/denoise_ladder.h"
#include "pipeline/frame_sink.h"
#include "pipeline/history.h"
#include "pipeline/picture_builder.h"

namespace vidproc {

struct Pipeline::Stages {
  explicit Stages(const PipelineSettings& settings);
  void Process(const InputPlanes& input, const OutputPlanes& output);
  void MeasureNoise(const InputPlanes& input);
  void FollowNoise();

  const PipelineSettings settings;
  const KernelTable& kernels = Kernels();
  PictureBuilder picture{settings, kernels};
  const bool passesThrough = picture.ChangesNothing();
  std::unique_ptr<FrameSink> sink;
  std::optional<NoiseEstimator> noise;  ///< of automatic denoising
};

Pipeline::Stages::Stages(const PipelineSettings& settings) : settings(settings) {
  picture.AddSources();
  picture.AddDeblocking();
  picture.AddDenoising();
  picture.AddScaling();
  picture.AddLumaFinish();
  sink = std::make_unique<FrameSink>(settings.output, picture.rows, kernels);
  if (settings.denoise.automatic > 0) noise.emplace(settings.input.width, settings.input.height);
}

void Pipeline::Stages::MeasureNoise(const InputPlanes& input) {
  const PixelFormat format = settings.input.format;
  const std::ptrdiff_t offset = format == PixelFormat::kUyvy ? 1 : 0;
  noise->Measure({input.plane[0] + offset, input.stride[0], IsPacked(format) ? 2 : 1});
  FollowNoise();
}

void Pipeline::Stages::FollowNoise() {
  picture.UseDenoiseStep(LadderStep(std::int64_t{noise->Deviation()} * settings.denoise.automatic / 100));
}

void Pipeline::Stages::Process(const InputPlanes& input, const OutputPlanes& output) {
  const bool inPlace = input.plane[0] == output.plane[0];
  if (noise) MeasureNoise(input);
  for (const auto& stage : picture.stages) stage->StartFrame();
  for (int i = 0; i < 3; ++i) {
    if (picture.sources[i] != nullptr) picture.sources[i]->Attach(input.plane[i], input.stride[i], inPlace);
  }
  for (const auto& step : picture.wholeFrameSteps) step->Run();
  sink->Write(output);
  for (const auto& stage : picture.stages) stage->EndFrame();
}

Pipeline::Pipeline(const PipelineSettings& settings) : stages(std::make_unique<Stages>(settings)) {}

Pipeline::~Pipeline() = default;

void Pipeline::TakeHistory(Pipeline& replaced) noexcept {
  const FrameShape& before = replaced.stages->settings.input;
  const FrameShape& now = stages->settings.input;
  const bool isSamePicture = before.width == now.width && before.height == now.height &&
                             HalvesChromaRows(before.format) == HalvesChromaRows(now.format);
  if (!isSamePicture) return;
  if (stages->noise && replaced.stages->noise) {
    stages->noise = *replaced.stages->noise;
    stages->FollowNoise();
  }
  MoveHistory(replaced.stages->picture.denoisers, stages->picture.denoisers, stages->kernels);
}

void Pipeline::ForgetHistory() noexcept {
  for (DenoiseStage* const stage : stages->picture.denoisers) {
    if (stage != nullptr) stage->ForgetKept();
  }
  if (stages->noise) stages->noise->Forget();
}

bool Pipeline::PassesThrough() const noexcept { return stages->passesThrough; }

std::int32_t Pipeline::Noise() const noexcept { return stages->noise ? stages->noise->Deviation() : 0; }

void Pipeline::Process(const InputPlanes& input, const OutputPlanes& output) noexcept {
  stages->Process(input, output);
}

}  // namespace vidproc
