#include "api/presets.h"

#include <algorithm>
#include <cstring>
#include <string_view>

namespace vidproc::api {
namespace {

constexpr std::size_t kTaps = offsetof(vidproc_pre_options, taps);
constexpr std::size_t kDenoiseAuto = offsetof(vidproc_pre_options, denoise_auto);

// docs/presets.md says what was measured: denoising for more or less than the noise as estimated costs bits in the dark
// and at low rates too, and so does every stage but scaling after a decoder that deblocks by itself.
constexpr PresetField kCamera[] = {{kTaps, 16}, {kDenoiseAuto, 100}};
constexpr PresetField kScaling[] = {{kTaps, 16}};

constexpr Preset kPreTable[] = {
    {"webcam", kCamera}, {"low-light", kCamera}, {"low-bandwidth", kCamera}, {"screen", kScaling}, {"none", {}}};
constexpr Preset kPostTable[] = {{"camera", kScaling}, {"screen-share", kScaling}, {"none", {}}};

}  // namespace

const std::span<const Preset> kPrePresets = kPreTable;
const std::span<const Preset> kPostPresets = kPostTable;

vidproc_status WritePreset(const OptionTable& table, std::span<const Preset> presets, const char* name, void* options,
                           std::size_t size) noexcept {
  if (name == nullptr) return VIDPROC_ERROR_INVALID_ARGUMENT;
  const auto preset =
      std::find_if(presets.begin(), presets.end(), [=](const Preset& p) { return std::string_view(p.name) == name; });
  if (preset == presets.end()) return VIDPROC_ERROR_INVALID_ARGUMENT;
  const vidproc_status status = WriteDefaults(table, options, size);
  if (status != VIDPROC_OK) return status;
  for (const PresetField& field : preset->fields) {
    std::memcpy(static_cast<char*>(options) + field.offset, &field.value, sizeof(field.value));
  }
  return VIDPROC_OK;
}

const char* PresetName(std::span<const Preset> presets, std::int32_t number) noexcept {
  return 0 <= number && static_cast<std::size_t>(number) < presets.size()
             ? presets[static_cast<std::size_t>(number)].name
             : nullptr;
}

}  // namespace vidproc::api
