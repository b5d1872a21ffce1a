#include <cstring>
#include <string>
#include <vector>

#include "api/option_checks.h"
#include "fuzz/digest.h"
#include "golden/golden_cases.h"
#include "support/api_frames.h"
#include "vidproc/vidproc.hpp"

namespace golden {
namespace {

using testing_support::kFormats;
using testing_support::TightFrame;
using vidproc::PostOptions;
using vidproc::PreOptions;

constexpr int kFrames = 3;

int RowBytes(const vidproc_frame_info& info) {
  const bool isPacked = info.format == VIDPROC_FORMAT_UYVY || info.format == VIDPROC_FORMAT_YUYV;
  return isPacked ? (info.width + 1) / 2 * 4 : info.width;
}

template <typename Stream, typename Options>
std::uint64_t Run(const Options& options) {
  Stream stream(options);
  TightFrame in(options.input, 0), out(options.output, 0);
  fuzzing::Digest digest;
  for (int n = 0; n < kFrames; ++n) {
    PaintFrame(in.bytes, RowBytes(options.input), n);
    stream.Process(in.Read(), out.Write());
    digest.Add(out.bytes.data(), out.bytes.size());
  }
  return digest.Value();
}

std::uint64_t RunExposure(const vidproc::ExposureOptions& options) {
  vidproc::Exposure exposure(options);
  TightFrame frame(options.input, 0);
  fuzzing::Digest digest;
  for (int n = 0; n < 90; ++n) {
    PaintFrame(frame.bytes, RowBytes(options.input), n % 2);
    for (std::uint8_t& byte : frame.bytes) byte = static_cast<std::uint8_t>(byte / (n < 45 ? 2 : 4));
    digest.Add(exposure.Process(frame.Read()));
  }
  return digest.Value();
}

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

  void Add(const PreOptions& options) { Add<vidproc::Pre>("pre", vidproc::api::kPreOptions, options); }
  void Add(const PostOptions& options) { Add<vidproc::Post>("post", vidproc::api::kPostOptions, options); }
  void Add(const vidproc::ExposureOptions& options) {
    cases.push_back(
        {"exposure" + Describe(vidproc::api::kExposureOptions, options), false, [=] { return RunExposure(options); }});
  }

 private:
  template <typename Stream, typename Options>
  void Add(const char* kind, const vidproc::api::OptionTable& table, Options options) {
    options.dither_seed = 33;
    bool mayImprove = options.filter == VIDPROC_FILTER_AUTOMATIC;
    if constexpr (requires { options.denoise_auto; }) mayImprove = mayImprove || options.denoise_auto != 0;
    cases.push_back({kind + Describe(table, options), mayImprove, [=] { return Run<Stream>(options); }});
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
  constexpr int kSizes[][4] = {
      {96, 48, 48, 24}, {200, 64, 30, 9}, {90, 60, 60, 40}, {40, 24, 60, 36}, {32, 18, 96, 54}};
  for (int filter = VIDPROC_FILTER_AUTOMATIC; filter <= VIDPROC_FILTER_TWO_SINCS; ++filter) {
    for (const auto& size : kSizes) {
      auto options = Sizes<PreOptions>(size[0], size[1], size[2], size[3], filter);
      options.softening = 12;
      cases.Add(options);
      options.taps = 16;
      options.sharpening = size[0] % 7;
      cases.Add(options);
    }
    auto post = Sizes<PostOptions>(64, 36, 96, 54, filter);
    post.sharpening = 4;
    post.lobes = 2;
    cases.Add(post);
  }
}

void AddStages(Cases& cases) {
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
