// Named sets of options to start from.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "api/option_checks.h"

namespace vidproc::api {

/// A field that is not the default.
struct PresetField {
  std::size_t offset;
  std::int32_t value;
};

struct Preset {
  const char* name;
  std::span<const PresetField> fields;
};

extern const std::span<const Preset> kPrePresets;
extern const std::span<const Preset> kPostPresets;

/// Writes a preset's options into a struct of `size` bytes, which may be one of a later version.
vidproc_status WritePreset(const OptionTable& table, std::span<const Preset> presets, const char* name, void* options,
                           std::size_t size) noexcept;

/// Null beyond the last.
const char* PresetName(std::span<const Preset> presets, std::int32_t number) noexcept;

}  // namespace vidproc::api
