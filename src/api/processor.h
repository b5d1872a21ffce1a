// What pre- and post-processor handles hold and do alike.
#pragma once

#include <memory>

#include "api/error_text.h"
#include "api/handle.h"
#include "api/option_checks.h"
#include "pipeline/pipeline.h"
#include "vidproc/vidproc.h"

namespace vidproc::api {

struct Processor {
  ErrorText error;
  std::unique_ptr<Pipeline> pipeline;  ///< null until configured
  vidproc_frame_info input = {};
  vidproc_frame_info output = {};
};

/// Replaces the pipeline by one of checked settings; changes nothing when memory is out.
vidproc_status ReplacePipeline(Processor& processor, const PipelineSettings& settings, const vidproc_frame_info& input,
                               const vidproc_frame_info& output) noexcept;
vidproc_status Process(Processor& processor, const vidproc_input* input, const vidproc_output* output) noexcept;
vidproc_status Reset(Processor& processor) noexcept;
/// See vidproc_pre_passes_through.
vidproc_status PassesThrough(Processor& processor, std::int32_t* passes) noexcept;
/// Writes what the pipeline estimates, see vidproc_pre_noise.
vidproc_status Noise(Processor& processor, std::int32_t* noise) noexcept;

template <typename Options>
vidproc_status ConfigureProcessor(Processor& processor, const OptionTable& table, const Options* options) noexcept {
  Options known;
  vidproc_status status = ReadOptions(table, options, &known, processor.error);
  if (status != VIDPROC_OK) return status;
  const PipelineSettings settings = SettingsOf(known);
  status = CheckSettings(settings, processor.error);
  return status == VIDPROC_OK ? ReplacePipeline(processor, settings, known.input, known.output) : status;
}

}  // namespace vidproc::api
