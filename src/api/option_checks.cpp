#include "api/option_checks.h"

#include <algorithm>
#include <cstring>

namespace vidproc::api {
namespace {

/// Beyond what any version's struct will need: a size that was never written.
constexpr std::size_t kLargestSize = 4096;

constexpr std::int32_t kLargestLumaProduct = 32767;  // luma is shifted in 16 bits

constexpr OptionField InRange(const char* name, std::size_t offset, int low, int high, int defaultValue) {
  return {name, offset, low, high, low, defaultValue};
}

// Of all structs: the exposure watcher's ends after the input.
using Shared = vidproc_pre_options;
static_assert(offsetof(Shared, input) == offsetof(vidproc_exposure_options, input));
static_assert(offsetof(Shared, alignment) == offsetof(vidproc_post_options, alignment));
static_assert(offsetof(Shared, dither_seed) == offsetof(vidproc_post_options, dither_seed));

constexpr int kSmallestWatched = 16;  // one block

// Formats and sizes have no default: 0 is refused.
constexpr OptionField kSharedFields[] = {
    InRange("input.format", offsetof(Shared, input.format), VIDPROC_FORMAT_UYVY, VIDPROC_FORMAT_I422, 0),
    InRange("input.width", offsetof(Shared, input.width), kMinWidth, kMaxSide, 0),
    InRange("input.height", offsetof(Shared, input.height), kMinHeight, kMaxSide, 0),
    InRange("input.siting", offsetof(Shared, input.siting), VIDPROC_SITING_LEFT, VIDPROC_SITING_CENTRE, 0),
    InRange("output.format", offsetof(Shared, output.format), VIDPROC_FORMAT_UYVY, VIDPROC_FORMAT_I422, 0),
    InRange("output.width", offsetof(Shared, output.width), kMinWidth, kMaxSide, 0),
    InRange("output.height", offsetof(Shared, output.height), kMinHeight, kMaxSide, 0),
    InRange("output.siting", offsetof(Shared, output.siting), VIDPROC_SITING_LEFT, VIDPROC_SITING_CENTRE, 0),
    InRange("alignment", offsetof(Shared, alignment), VIDPROC_ALIGNMENT_CENTRES, VIDPROC_ALIGNMENT_CORNERS, 0),
    InRange("filter", offsetof(Shared, filter), VIDPROC_FILTER_AUTOMATIC, VIDPROC_FILTER_TWO_SINCS, 0),
    {"taps", offsetof(Shared, taps), 16, 16, 8, 8},
    InRange("softening", offsetof(Shared, softening), 0, 255, 0),
    InRange("lobes", offsetof(Shared, lobes), 1, 16, 3),
    InRange("sharpening", offsetof(Shared, sharpening), 0, 16, 0),
    InRange("luma_gain", offsetof(Shared, luma_gain), 1, 127, 64),
    InRange("luma_offset", offsetof(Shared, luma_offset), -255, 255, 0),
    InRange("dither_level", offsetof(Shared, dither_level), 0, 12, 0),
    InRange("dither_seed", offsetof(Shared, dither_seed), -1, 255, -1),
};

constexpr OptionField kPreFields[] = {
    InRange("denoise_edge", offsetof(vidproc_pre_options, denoise_edge), 0, 8, 0),
    InRange("denoise_softening", offsetof(vidproc_pre_options, denoise_softening), 0, 255, 10),
    {"denoise_taps", offsetof(vidproc_pre_options, denoise_taps), 16, 16, 8, 8},
    InRange("temporal_strength", offsetof(vidproc_pre_options, temporal_strength), 0, 127, 0),
    InRange("temporal_shift", offsetof(vidproc_pre_options, temporal_shift), 0, 8, 0),
    InRange("motion_smoothing", offsetof(vidproc_pre_options, motion_smoothing), 0, 1, 0),
    InRange("denoise_passes", offsetof(vidproc_pre_options, denoise_passes), 1, 3, 1),
    InRange("denoise_auto", offsetof(vidproc_pre_options, denoise_auto), 0, 400, 0),
};

constexpr OptionField kPostFields[] = {
    {"deblock_level", offsetof(vidproc_post_options, deblock_level), 21, 255, 0, 0},
};

constexpr OptionField kExposureFields[] = {
    kSharedFields[0],
    InRange("input.width", offsetof(Shared, input.width), kSmallestWatched, kMaxSide, 0),
    InRange("input.height", offsetof(Shared, input.height), kSmallestWatched, kMaxSide, 0),
    kSharedFields[3],
};

vidproc_status CheckField(const OptionField& field, const void* options, ErrorText& error) {
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

/// Fields that only a later version knows must be nothing.
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
  settings.denoise.taps = 8;
  settings.lumaGain = o.luma_gain;
  settings.lumaOffset = o.luma_offset;
  settings.ditherLevel = o.dither_level;
  settings.ditherSeed = o.dither_seed;
  return settings;
}

}  // namespace

const OptionTable kPreOptions = {kSharedFields, kPreFields, sizeof(vidproc_pre_options), sizeof(vidproc_pre_options)};
const OptionTable kPostOptions = {kSharedFields, kPostFields, sizeof(vidproc_post_options),
                                  sizeof(vidproc_post_options)};
const OptionTable kExposureOptions = {
    {}, kExposureFields, sizeof(vidproc_exposure_options), sizeof(vidproc_exposure_options)};

vidproc_status WriteDefaults(const OptionTable& table, void* options, std::size_t size) noexcept {
  ErrorText ignored;
  if (options == nullptr || CheckSize(table, size, ignored) != VIDPROC_OK) return VIDPROC_ERROR_INVALID_ARGUMENT;
  std::memset(options, 0, size);
  const auto structSize = static_cast<std::uint32_t>(size);
  std::memcpy(options, &structSize, sizeof(structSize));
  for (const auto fields : {table.shared, table.own}) {
    for (const OptionField& field : fields) {
      if (field.offset + sizeof(field.defaultValue) > size) continue;
      std::memcpy(static_cast<char*>(options) + field.offset, &field.defaultValue, sizeof(field.defaultValue));
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
    for (const OptionField& field : fields) {
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
