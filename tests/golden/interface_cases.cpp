#include <cstring>
#include <string>
#include <vector>

#include "api/option_checks.h"
#include "golden/golden_cases.h"
#include "support/api_frames.h"
#include "support/kernel_harness.h"

namespace golden {
namespace {

using testing_support::kFormats;
using vidproc::PostOptions;
using vidproc::PreOptions;

/// The fields that differ from their defaults.
template <typename Options>
std::string Describe(const vidproc::api::OptionTable& table, const Options& options) {
  std::string text;
  for (const auto fields : {table.shared, table.own}) {
    for (const vidproc_option& field : fields) {
      std::int32_t value = 0;
      std::memcpy(&value, reinterpret_cast<const char*>(&options) + field.offset, sizeof(value));
      if (value != field.default_value) text += std::string(" ") + field.name + " " + std::to_string(value);
    }
  }
  return text;
}

class Cases {
 public:
  explicit Cases(std::vector<Case>& cases) : cases(cases) {}

  void Add(const PreOptions& options) { Add("pre", vidproc::api::kPreOptions, options); }
  void Add(const PostOptions& options) { Add("post", vidproc::api::kPostOptions, options); }
  void Add(const vidproc::ExposureOptions& options) { Add("exposure", vidproc::api::kExposureOptions, options); }

 private:
  template <typename Options>
  void Add(const char* kind, const vidproc::api::OptionTable& table, Options options) {
    bool mayImprove = false;
    if constexpr (requires { options.filter; }) {
      options.dither_seed = 33;
      mayImprove = options.filter == VIDPROC_FILTER_AUTOMATIC;
    }
    if constexpr (requires { options.denoise_auto; }) mayImprove = mayImprove || options.denoise_auto != 0;
    // Packed rows of an odd width have room for the whole last pair.
    const int padding = options.input.width % 2 * 2;
    cases.push_back({kind + Describe(table, options), mayImprove, [=] { return StartChecked(options, {padding}); }});
  }

  std::vector<Case>& cases;
};

template <typename Options>
Options Sizes(int inWidth, int inHeight, int outWidth, int outHeight, vidproc_filter filter) {
  auto options = testing_support::WithSizes<Options>(inWidth, inHeight, outWidth, outHeight);
  options.filter = filter;
  return options;
}

void AddFormats(Cases& cases) {
  for (const vidproc_format from : kFormats) {
    for (const vidproc_format to : kFormats) {
      auto options = Sizes<PreOptions>(71, 37, 71, 37, VIDPROC_FILTER_CATMULL_ROM);
      options.input.format = from;
      options.output.format = to;
      cases.Add(options);
      options.output.width = 45;
      options.output.height = 24;
      options.input.siting = VIDPROC_SITING_CENTRE;
      cases.Add(options);
      options.alignment = VIDPROC_ALIGNMENT_CORNERS;
      options.denoise_edge = 3;
      options.temporal_strength = 90;
      cases.Add(options);
    }
    auto options = Sizes<PostOptions>(64, 48, 64, 48, VIDPROC_FILTER_MITCHELL);
    options.input.format = options.output.format = from;
    for (const int level : {21, 60, 128, 255}) {
      options.deblock_level = level;
      cases.Add(options);
    }
    vidproc::ExposureOptions exposure;
    exposure.input = {from, 65, 50, VIDPROC_SITING_LEFT};
    cases.Add(exposure);
  }
}

void AddFilters(Cases& cases) {
  constexpr testing_support::Geometry kSizes[] = {
      {96, 48, 48, 24}, {200, 64, 30, 9}, {90, 60, 60, 40}, {40, 24, 60, 36}, {32, 18, 96, 54}};
  for (int filter = VIDPROC_FILTER_AUTOMATIC; filter <= VIDPROC_FILTER_TWO_SINCS; ++filter) {
    for (const testing_support::Geometry& g : kSizes) {
      auto options = Sizes<PreOptions>(g.inWidth, g.inHeight, g.outWidth, g.outHeight, filter);
      options.softening = 12;
      cases.Add(options);
      options.taps = 16;
      options.sharpening = g.inWidth % 7;  // another one for each size
      cases.Add(options);
    }
    auto corners = Sizes<PreOptions>(54, 36, 90, 41, filter);
    corners.alignment = VIDPROC_ALIGNMENT_CORNERS;
    cases.Add(corners);
    auto post = Sizes<PostOptions>(64, 36, 96, 54, filter);
    post.sharpening = 4;
    post.lobes = 2;
    cases.Add(post);
  }
}

void AddStages(Cases& cases) {
  // Several passes, which read the denoised rows in another order at each level.
  auto steep = Sizes<PreOptions>(70, 250, 40, 9, VIDPROC_FILTER_AUTOMATIC);
  steep.denoise_edge = 2, steep.temporal_strength = 100, steep.motion_smoothing = 1;
  cases.Add(steep);
  for (int level = 1; level <= 8; ++level) {
    auto options = Sizes<PreOptions>(64, 40, 64, 40, VIDPROC_FILTER_BILINEAR);
    options.denoise_edge = level;
    options.denoise_softening = 20 * level;
    cases.Add(options);
    options.denoise_taps = 16;
    options.temporal_strength = 15 * level;
    options.temporal_shift = 8 - level;
    cases.Add(options);
    options.motion_smoothing = 1;
    options.temporal_shift = level;
    options.denoise_passes = 1 + level % 3;
    cases.Add(options);
    if (level % 4 == 0) {
      options.denoise_auto = 50 * level;
      cases.Add(options);
    }
    auto post = Sizes<PostOptions>(64, 40, 40, 30, VIDPROC_FILTER_LANCZOS);
    post.dither_level = level + 4;
    post.luma_gain = 8 * level;
    post.luma_offset = 40 * level - 150;
    cases.Add(post);
  }
}

}  // namespace

void AddInterfaceCases(std::vector<Case>& cases) {
  Cases all(cases);
  AddFormats(all);
  AddFilters(all);
  AddStages(all);
}

}  // namespace golden
