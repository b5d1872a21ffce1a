#include "api/processor.h"

#include <utility>

#include "api/frame_checks.h"
#include "api/presets.h"

struct vidproc_pre : vidproc::api::Processor {};
struct vidproc_post : vidproc::api::Processor {};

namespace vidproc::api {

vidproc_status ReplacePipeline(Processor& processor, const PipelineSettings& settings, const vidproc_frame_info& input,
                               const vidproc_frame_info& output) noexcept {
  return WithoutExceptions(processor.error, [&] {
    auto replacement = std::make_unique<Pipeline>(settings);
    // Nothing below fails.
    if (processor.pipeline != nullptr) replacement->TakeHistory(*processor.pipeline);
    processor.pipeline = std::move(replacement);
    processor.input = input;
    processor.output = output;
    return VIDPROC_OK;
  });
}

vidproc_status Process(Processor& processor, const vidproc_input* input, const vidproc_output* output) noexcept {
  ErrorText& error = processor.error;
  if (processor.pipeline == nullptr) return RefuseUnconfigured(error);
  if (input == nullptr) return error.Set(VIDPROC_ERROR_INVALID_ARGUMENT, "input is null, allowed is a frame");
  if (output == nullptr) return error.Set(VIDPROC_ERROR_INVALID_ARGUMENT, "output is null, allowed is a frame");
  const FrameView in = ViewOf("input", *input), out = ViewOf("output", *output);
  vidproc_status status = CheckFrame(in, processor.input, error);
  if (status == VIDPROC_OK) status = CheckFrame(out, processor.output, error);
  if (status == VIDPROC_OK) status = CheckOverlap(in, processor.input, out, processor.output, error);
  if (status != VIDPROC_OK) return status;
  processor.pipeline->Process(
      {{input->plane[0], input->plane[1], input->plane[2]}, {input->stride[0], input->stride[1], input->stride[2]}},
      {{output->plane[0], output->plane[1], output->plane[2]},
       {output->stride[0], output->stride[1], output->stride[2]}});
  return VIDPROC_OK;
}

vidproc_status Noise(Processor& processor, std::int32_t* noise) noexcept {
  ErrorText& error = processor.error;
  if (noise == nullptr) return error.Set(VIDPROC_ERROR_INVALID_ARGUMENT, "noise is null, allowed is a place for it");
  if (processor.pipeline == nullptr) return RefuseUnconfigured(error);
  *noise = processor.pipeline->Noise();
  return VIDPROC_OK;
}

vidproc_status PassesThrough(Processor& processor, std::int32_t* passes) noexcept {
  ErrorText& error = processor.error;
  if (passes == nullptr) return error.Set(VIDPROC_ERROR_INVALID_ARGUMENT, "passes is null, allowed is a place for it");
  if (processor.pipeline == nullptr) return RefuseUnconfigured(error);
  *passes = processor.pipeline->PassesThrough() ? 1 : 0;
  return VIDPROC_OK;
}

vidproc_status Reset(Processor& processor) noexcept {
  if (processor.pipeline != nullptr) processor.pipeline->ForgetHistory();
  return VIDPROC_OK;
}

}  // namespace vidproc::api

using namespace vidproc::api;

extern "C" {

vidproc_status vidproc_pre_create(vidproc_pre** pre) { return CreateHandle(pre); }
void vidproc_pre_destroy(vidproc_pre* pre) { delete pre; }
vidproc_status vidproc_pre_options_init(vidproc_pre_options* options, size_t size) {
  return WriteDefaults(kPreOptions, options, size);
}
vidproc_status vidproc_pre_options_preset(vidproc_pre_options* options, size_t size, const char* name) {
  return WritePreset(kPreOptions, kPrePresets, name, options, size);
}
const char* vidproc_pre_preset(int32_t number) { return PresetName(kPrePresets, number); }
const vidproc_option* vidproc_pre_option(int32_t number) { return SettingAt(kPreOptions, number); }
vidproc_status vidproc_pre_configure(vidproc_pre* pre, const vidproc_pre_options* options) {
  return CallHandle(pre, [&](Processor& p) { return ConfigureProcessor(p, kPreOptions, options); });
}
vidproc_status vidproc_pre_process(vidproc_pre* pre, const vidproc_input* input, const vidproc_output* output) {
  return CallHandle(pre, [&](Processor& p) { return Process(p, input, output); });
}
vidproc_status vidproc_pre_reset(vidproc_pre* pre) { return CallHandle(pre, Reset); }
vidproc_status vidproc_pre_passes_through(vidproc_pre* pre, int32_t* passes) {
  return CallHandle(pre, [&](Processor& p) { return PassesThrough(p, passes); });
}
vidproc_status vidproc_pre_noise(vidproc_pre* pre, int32_t* noise) {
  return CallHandle(pre, [&](Processor& p) { return Noise(p, noise); });
}
const char* vidproc_pre_last_error(const vidproc_pre* pre) { return LastError(pre, "pre is null"); }

vidproc_status vidproc_post_create(vidproc_post** post) { return CreateHandle(post); }
void vidproc_post_destroy(vidproc_post* post) { delete post; }
vidproc_status vidproc_post_options_init(vidproc_post_options* options, size_t size) {
  return WriteDefaults(kPostOptions, options, size);
}
vidproc_status vidproc_post_options_preset(vidproc_post_options* options, size_t size, const char* name) {
  return WritePreset(kPostOptions, kPostPresets, name, options, size);
}
const char* vidproc_post_preset(int32_t number) { return PresetName(kPostPresets, number); }
const vidproc_option* vidproc_post_option(int32_t number) { return SettingAt(kPostOptions, number); }
vidproc_status vidproc_post_configure(vidproc_post* post, const vidproc_post_options* options) {
  return CallHandle(post, [&](Processor& p) { return ConfigureProcessor(p, kPostOptions, options); });
}
vidproc_status vidproc_post_process(vidproc_post* post, const vidproc_input* input, const vidproc_output* output) {
  return CallHandle(post, [&](Processor& p) { return Process(p, input, output); });
}
vidproc_status vidproc_post_reset(vidproc_post* post) { return CallHandle(post, Reset); }
vidproc_status vidproc_post_passes_through(vidproc_post* post, int32_t* passes) {
  return CallHandle(post, [&](Processor& p) { return PassesThrough(p, passes); });
}
const char* vidproc_post_last_error(const vidproc_post* post) { return LastError(post, "post is null"); }

}  // extern "C"
