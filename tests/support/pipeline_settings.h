// Settings of a pipeline for tests.
#pragma once

#include "pipeline/pipeline.h"

namespace testing_support {

/// Scaling alone, by the automatic filter.
inline vidproc::PipelineSettings PlainSettings(const vidproc::FrameShape& input, const vidproc::FrameShape& output) {
  vidproc::PipelineSettings settings{};
  settings.role = vidproc::Role::kPreProcessor;
  settings.input = input;
  settings.output = output;
  settings.scaling = {.alignment = vidproc::Alignment::kCentres,
                      .filter = vidproc::ScalingFilter::kAutomatic,
                      .taps = 8,
                      .softening = 10,
                      .lobes = 3,
                      .sharpening = 0};
  settings.denoise.taps = 8;
  settings.lumaGain = 64;
  settings.ditherSeed = 0;
  return settings;
}

}  // namespace testing_support
