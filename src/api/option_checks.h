// Options structs of the interface: their defaults, what their fields may hold, and how structs of other versions are
// read.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "api/error_text.h"
#include "api/frame_layout.h"
#include "pipeline/pipeline.h"
#include "vidproc/vidproc.h"

namespace vidproc::api {

/// Every field of an options struct but the first, its size. The shared ones lie at the same places in both
/// processors'.
struct OptionTable {
  std::span<const vidproc_option> shared;
  std::span<const vidproc_option> own;
  std::size_t structSize;
  std::size_t smallestSize;  ///< of the first version
};

extern const OptionTable kPreOptions;
extern const OptionTable kPostOptions;
extern const OptionTable kExposureOptions;

/// A processor's setting by number, formats and sizes of frames left out; null beyond the last.
const vidproc_option* SettingAt(const OptionTable& table, std::int32_t number) noexcept;

/// Writes the defaults into a struct of `size` bytes, which may be one of a later version.
vidproc_status WriteDefaults(const OptionTable& table, void* options, std::size_t size) noexcept;

/// Reads a caller's struct of any version into `known`, a struct of this version, and checks every field.
vidproc_status ReadOptions(const OptionTable& table, const void* options, void* known, ErrorText& error) noexcept;

/// Settings of the pipeline from options that ReadOptions has accepted; stages of the other side are off.
PipelineSettings SettingsOf(const vidproc_pre_options& options);
PipelineSettings SettingsOf(const vidproc_post_options& options);

/// Checks fields against each other: luma_offset against luma_gain.
vidproc_status CheckSettings(const PipelineSettings& settings, ErrorText& error) noexcept;

}  // namespace vidproc::api
