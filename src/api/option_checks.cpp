#include "api/option_checks.h"

#include <algorithm>
#include <cstring>

namespace vidproc::api {
namespace {

/// Beyond what any version's struct will need: a size that was never written.
constexpr std::size_t kLargestSize = 4096;

constexpr std::int32_t kLargestLumaProduct = 32767;  // luma is shifted in 16 bits

vidproc_status CheckField(const vidproc_option& field, const void* options, ErrorText& error) {
  std::int32_t value = 0;
  std::memcpy(&value, static_cast<const char*>(options) + field.offset, sizeof(value));
  if ((field.low <= value && value <= field.high) || value == field.also) return VIDPROC_OK;
  if (field.also == field.low) {
    return error.Set(VIDPROC_ERROR_INVALID_ARGUMENT, "%s is %d, allowed %d to %d", field.name, value, field.low,
                     field.high);
  }
  if (field.low == field.high) {
    return error.Set(VIDPROC_ERROR_INVALID_ARGUMENT, "%s is %d, allowed %d or %d", field.name, value, field.also,
                     field.low);
  }
  return error.Set(VIDPROC_ERROR_INVALID_ARGUMENT, "%s is %d, allowed %d or %d to %d", field.name, value, field.also,
                   field.low, field.high);
}

vidproc_status CheckSize(const OptionTable& table, std::size_t size, ErrorText& error) {
  if (table.smallestSize <= size && size <= kLargestSize) return VIDPROC_OK;
  return error.Set(VIDPROC_ERROR_INVALID_ARGUMENT, "struct_size is %zu, allowed %zu to %zu, as _options_init writes it",
                   size, table.smallestSize, kLargestSize);
}

/// Fields that only a later version knows must be 0.
vidproc_status CheckTail(const OptionTable& table, const char* options, std::size_t size, ErrorText& error) {
  const char* end = options + size;
  const char* set = std::find_if(options + std::min(table.structSize, size), end, [](char c) { return c != 0; });
  if (set == end) return VIDPROC_OK;
  return error.Set(VIDPROC_ERROR_UNSUPPORTED,
                   "byte %td of the options is set, allowed is 0 from byte %zu on in version %s", set - options,
                   table.structSize, vidproc_version_string());
}

/// Of the options that both processors have; nothing of what one of them has.
template <typename Options>
PipelineSettings SharedSettings(Role role, const Options& o) {
  const auto shapeOf = [](const vidproc_frame_info& info) {
    return FrameShape{static_cast<PixelFormat>(info.format - VIDPROC_FORMAT_UYVY),
                      static_cast<ChromaSiting>(info.siting), info.width, info.height};
  };
  PipelineSettings settings = {};
  settings.role = role;
  settings.input = shapeOf(o.input);
  settings.output = shapeOf(o.output);
  settings.scaling = {.alignment = static_cast<Alignment>(o.alignment),
                      .filter = static_cast<ScalingFilter>(o.filter),
                      .taps = o.taps,
                      .softening = o.softening,
                      .lobes = o.lobes,
                      .sharpening = o.sharpening};
  settings.lumaGain = o.luma_gain;
  settings.lumaOffset = o.luma_offset;
  settings.ditherLevel = o.dither_level;
  settings.ditherSeed = o.dither_seed;
  return settings;
}

}  // namespace

vidproc_status WriteDefaults(const OptionTable& table, void* options, std::size_t size) noexcept {
  ErrorText ignored;
  if (options == nullptr || CheckSize(table, size, ignored) != VIDPROC_OK) return VIDPROC_ERROR_INVALID_ARGUMENT;
  std::memset(options, 0, size);
  const auto structSize = static_cast<std::uint32_t>(size);
  std::memcpy(options, &structSize, sizeof(structSize));
  for (const auto fields : {table.shared, table.own}) {
    for (const vidproc_option& field : fields) {
      if (field.offset + sizeof(field.default_value) > size) continue;
      std::memcpy(static_cast<char*>(options) + field.offset, &field.default_value, sizeof(field.default_value));
    }
  }
  return VIDPROC_OK;
}

vidproc_status ReadOptions(const OptionTable& table, const void* options, void* known, ErrorText& error) noexcept {
  if (options == nullptr) return error.Set(VIDPROC_ERROR_INVALID_ARGUMENT, "options is null, allowed is a struct");
  std::uint32_t size = 0;
  std::memcpy(&size, options, sizeof(size));
  vidproc_status status = CheckSize(table, size, error);
  if (status == VIDPROC_OK) status = CheckTail(table, static_cast<const char*>(options), size, error);
  if (status != VIDPROC_OK) return status;
  WriteDefaults(table, known, table.structSize);
  std::memcpy(known, options, std::min<std::size_t>(size, table.structSize));
  for (const auto fields : {table.shared, table.own}) {
    for (const vidproc_option& field : fields) {
      status = CheckField(field, known, error);
      if (status != VIDPROC_OK) return status;
    }
  }
  return VIDPROC_OK;
}

PipelineSettings SettingsOf(const vidproc_pre_options& options) {
  PipelineSettings settings = SharedSettings(Role::kPreProcessor, options);
  settings.denoise = {.edge = options.denoise_edge,
                      .softening = options.denoise_softening,
                      .taps = options.denoise_taps,
                      .temporalStrength = options.temporal_strength,
                      .temporalShift = options.temporal_shift,
                      .smoothsMotion = options.motion_smoothing != 0,
                      .passes = options.denoise_passes,
                      .automatic = options.denoise_auto};
  return settings;
}

PipelineSettings SettingsOf(const vidproc_post_options& options) {
  PipelineSettings settings = SharedSettings(Role::kPostProcessor, options);
  settings.deblockLevel = options.deblock_level;
  return settings;
}

vidproc_status CheckSettings(const PipelineSettings& settings, ErrorText& error) noexcept {
  const std::int32_t lowest = 255 - kLargestLumaProduct / settings.lumaGain;
  if (settings.lumaOffset >= lowest) return VIDPROC_OK;
  return error.Set(VIDPROC_ERROR_UNSUPPORTED, "luma_offset is %d, allowed %d to 255 with luma_gain %d",
                   settings.lumaOffset, lowest, settings.lumaGain);
}

}  // namespace vidproc::api
