// The fields of the options structs; see option_checks.h.
#include <iterator>

#include "api/option_checks.h"
#include "kernels/block_statistics.h"

namespace vidproc::api {
namespace {

// Stands for all structs, whose first fields are the same: of the exposure watcher's up to the input, of the others' up
// to dither_seed.
using Shared = vidproc_pre_options;
static_assert(offsetof(Shared, input) == offsetof(vidproc_exposure_options, input));
static_assert(offsetof(Shared, alignment) == offsetof(vidproc_post_options, alignment));
static_assert(offsetof(Shared, dither_seed) == offsetof(vidproc_post_options, dither_seed));

// Bytes of the structs in version 1.0. They stay when fields are appended, so that programs of that version are taken.
constexpr std::size_t kFirstPreSize = 108;
constexpr std::size_t kFirstPostSize = 80;
constexpr std::size_t kFirstExposureSize = 20;
static_assert(sizeof(vidproc_pre_options) >= kFirstPreSize);
static_assert(sizeof(vidproc_post_options) >= kFirstPostSize);
static_assert(sizeof(vidproc_exposure_options) >= kFirstExposureSize);

constexpr int kSmallestWatched = kExposureBlockSize;

constexpr const char* kAlignments[] = {"centres", "corners", nullptr};
constexpr const char* kFilters[] = {"automatic", "bilinear", "catmull-rom",  "mitchell",  "lanczos",
                                    "area",      "gaussian", "hamming-sinc", "two-sincs", nullptr};
static_assert(std::size(kAlignments) == VIDPROC_ALIGNMENT_CORNERS + 2);
static_assert(std::size(kFilters) == VIDPROC_FILTER_TWO_SINCS + 2);

constexpr vidproc_option Number(const char* name, std::size_t offset, int low, int high, int standard,
                                const char* text) {
  return {name, text, nullptr, offset, low, high, low, standard};
}

template <std::size_t kCount>
constexpr vidproc_option Choice(const char* name, std::size_t offset, const char* const (&choices)[kCount],
                                const char* text) {
  return {name, text, choices, offset, 0, kCount - 2, 0, 0};
}

constexpr vidproc_option Taps(const char* name, std::size_t offset, const char* text) {
  return {name, text, nullptr, offset, 16, 16, 8, 8};
}

/// Of formats and sizes, which have no default: 0 is refused.
constexpr vidproc_option Required(const char* name, std::size_t offset, int low, int high) {
  return Number(name, offset, low, high, 0, "");
}

constexpr vidproc_option kSharedFields[] = {
    Required("input.format", offsetof(Shared, input.format), VIDPROC_FORMAT_UYVY, VIDPROC_FORMAT_I422),
    Required("input.width", offsetof(Shared, input.width), kMinWidth, kMaxSide),
    Required("input.height", offsetof(Shared, input.height), kMinHeight, kMaxSide),
    Required("input.siting", offsetof(Shared, input.siting), VIDPROC_SITING_LEFT, VIDPROC_SITING_CENTRE),
    Required("output.format", offsetof(Shared, output.format), VIDPROC_FORMAT_UYVY, VIDPROC_FORMAT_I422),
    Required("output.width", offsetof(Shared, output.width), kMinWidth, kMaxSide),
    Required("output.height", offsetof(Shared, output.height), kMinHeight, kMaxSide),
    Required("output.siting", offsetof(Shared, output.siting), VIDPROC_SITING_LEFT, VIDPROC_SITING_CENTRE),
    Choice("alignment", offsetof(Shared, alignment), kAlignments,
           "what of the two pictures coincides: their areas or their first samples"),
    Choice("filter", offsetof(Shared, filter), kFilters, "interpolation kernel"),
    Taps("taps", offsetof(Shared, taps), "taps of a row, twice as many as of a column; 16 cost about twice as much"),
    Number("softening", offsetof(Shared, softening), 0, 255, 0,
           "width of gaussian, hamming-sinc and two-sincs, in sixteenths of a sample"),
    Number("lobes", offsetof(Shared, lobes), 1, 16, 3, "lobes of two-sincs"),
    Number("sharpening", offsetof(Shared, sharpening), 0, 16, 0, "sharpening, in sixteenths"),
    Number("luma_gain", offsetof(Shared, luma_gain), 1, 127, 64, "gain of luma after its offset, in 64ths"),
    Number("luma_offset", offsetof(Shared, luma_offset), -255, 255, 0, "what is taken off luma"),
    Number("dither_level", offsetof(Shared, dither_level), 0, 12, 0, "amplitude of noise in luma against banding"),
    Number("dither_seed", offsetof(Shared, dither_seed), -1, 255, -1,
           "which noise, the same in every frame; -1 goes by the clock"),
};
constexpr std::size_t kRequiredFields = 8;  // of both frames

constexpr vidproc_option kPreFields[] = {
    Number("denoise_edge", offsetof(vidproc_pre_options, denoise_edge), 0, 8, 0,
           "averaging of neighbours that differ little: 0 none, 1 most, 8 least"),
    Number("denoise_softening", offsetof(vidproc_pre_options, denoise_softening), 0, 255, 10,
           "width of that averaging, 0 none"),
    Taps("denoise_taps", offsetof(vidproc_pre_options, denoise_taps),
         "neighbours in a row, twice as many as in a column; 16 for wide averaging"),
    Number("temporal_strength", offsetof(vidproc_pre_options, temporal_strength), 0, 127, 0,
           "weight of the previous frame where nothing moves, in 128ths"),
    Number("temporal_shift", offsetof(vidproc_pre_options, temporal_shift), 0, 8, 0,
           "how soon change outweighs the previous frame, 7 soonest"),
    Number("motion_smoothing", offsetof(vidproc_pre_options, motion_smoothing), 0, 1, 0,
           "average all neighbours where the picture moves"),
    Number("denoise_passes", offsetof(vidproc_pre_options, denoise_passes), 1, 3, 1,
           "how often neighbours are averaged"),
    Number("denoise_auto", offsetof(vidproc_pre_options, denoise_auto), 0, 400, 0,
           "denoise for so many per cent of the noise as measured, in place of the other settings of denoising; 0 off"),
};

constexpr vidproc_option kPostFields[] = {
    {"deblock_level", "how far across the borders of 8 x 8 blocks it smooths: 0 none, 21 to 255", nullptr,
     offsetof(vidproc_post_options, deblock_level), 21, 255, 0, 0},
};

constexpr vidproc_option kExposureFields[] = {
    kSharedFields[0],
    Required("input.width", offsetof(Shared, input.width), kSmallestWatched, kMaxSide),
    Required("input.height", offsetof(Shared, input.height), kSmallestWatched, kMaxSide),
    kSharedFields[3],
};

}  // namespace

const OptionTable kPreOptions = {kSharedFields, kPreFields, sizeof(vidproc_pre_options), kFirstPreSize};
const OptionTable kPostOptions = {kSharedFields, kPostFields, sizeof(vidproc_post_options), kFirstPostSize};
const OptionTable kExposureOptions = {{}, kExposureFields, sizeof(vidproc_exposure_options), kFirstExposureSize};

const vidproc_option* SettingAt(const OptionTable& table, std::int32_t number) noexcept {
  if (number < 0) return nullptr;
  auto index = static_cast<std::size_t>(number);
  for (const auto settings : {table.shared.subspan(kRequiredFields), table.own}) {
    if (index < settings.size()) return &settings[index];
    index -= settings.size();
  }
  return nullptr;
}

}  // namespace vidproc::api
