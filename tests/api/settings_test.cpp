// Options of the checked interface: each mistake gets its status and one text that names field, value and allowed
// range; what is allowed is taken; structs of other versions are read.
#include <gtest/gtest.h>

#include <cstring>
#include <initializer_list>
#include <string>
#include <utility>
#include <vector>

#include "support/api_frames.h"
#include "support/fast_noise.h"
#include "vidproc/vidproc.hpp"

namespace {

using namespace testing_support;

template <typename Options>
struct Refusal {
  void (*spoil)(Options&);
  const char* text;
  vidproc_status status = VIDPROC_ERROR_INVALID_ARGUMENT;
};

/// Of fields that both sides have.
template <typename Options>
const Refusal<Options> kShared[] = {
    {[](Options& o) { o.struct_size = 0; }, "struct_size is 0, allowed "},
    {[](Options& o) { o.struct_size -= 4; }, "to 4096, as _options_init writes it"},
    {[](Options& o) { o.struct_size = 4097; }, "struct_size is 4097, allowed "},
    {[](Options& o) { o.input.format = 0; }, "input.format is 0, allowed 1 to 5"},
    {[](Options& o) { o.input.width = 1; }, "input.width is 1, allowed 2 to 16384"},
    {[](Options& o) { o.input.height = 16385; }, "input.height is 16385, allowed 1 to 16384"},
    {[](Options& o) { o.input.siting = 2; }, "input.siting is 2, allowed 0 to 1"},
    {[](Options& o) { o.output.format = 6; }, "output.format is 6, allowed 1 to 5"},
    {[](Options& o) { o.output.width = 16385; }, "output.width is 16385, allowed 2 to 16384"},
    {[](Options& o) { o.output.height = 0; }, "output.height is 0, allowed 1 to 16384"},
    {[](Options& o) { o.output.height = INT32_MIN; }, "output.height is -2147483648, allowed 1 to 16384"},
    {[](Options& o) { o.output.siting = -1; }, "output.siting is -1, allowed 0 to 1"},
    {[](Options& o) { o.alignment = 2; }, "alignment is 2, allowed 0 to 1"},
    {[](Options& o) { o.filter = 9; }, "filter is 9, allowed 0 to 8"},
    {[](Options& o) { o.taps = 12; }, "taps is 12, allowed 8 or 16"},
    {[](Options& o) { o.softening = 256; }, "softening is 256, allowed 0 to 255"},
    {[](Options& o) { o.lobes = 0; }, "lobes is 0, allowed 1 to 16"},
    {[](Options& o) { o.sharpening = 17; }, "sharpening is 17, allowed 0 to 16"},
    {[](Options& o) { o.luma_gain = 0; }, "luma_gain is 0, allowed 1 to 127"},
    {[](Options& o) { o.luma_offset = -256; }, "luma_offset is -256, allowed -255 to 255"},
    {[](Options& o) { o.luma_gain = 127, o.luma_offset = -4; },
     "luma_offset is -4, allowed -3 to 255 with luma_gain 127", VIDPROC_ERROR_UNSUPPORTED},
    {[](Options& o) { o.dither_level = 13; }, "dither_level is 13, allowed 0 to 12"},
    {[](Options& o) { o.dither_seed = -2; }, "dither_seed is -2, allowed -1 to 255"},
};

const Refusal<vidproc_pre_options> kPre[] = {
    {[](vidproc_pre_options& o) { o.denoise_edge = 9; }, "denoise_edge is 9, allowed 0 to 8"},
    {[](vidproc_pre_options& o) { o.denoise_softening = -1; }, "denoise_softening is -1, allowed 0 to 255"},
    {[](vidproc_pre_options& o) { o.denoise_taps = 4; }, "denoise_taps is 4, allowed 8 or 16"},
    {[](vidproc_pre_options& o) { o.temporal_strength = 128; }, "temporal_strength is 128, allowed 0 to 127"},
    {[](vidproc_pre_options& o) { o.temporal_shift = 9; }, "temporal_shift is 9, allowed 0 to 8"},
    {[](vidproc_pre_options& o) { o.motion_smoothing = 2; }, "motion_smoothing is 2, allowed 0 to 1"},
    {[](vidproc_pre_options& o) { o.denoise_passes = 0; }, "denoise_passes is 0, allowed 1 to 3"},
    {[](vidproc_pre_options& o) { o.denoise_auto = 401; }, "denoise_auto is 401, allowed 0 to 400"},
};

const Refusal<vidproc_post_options> kPost[] = {
    {[](vidproc_post_options& o) { o.deblock_level = 20; }, "deblock_level is 20, allowed 0 or 21 to 255"},
    {[](vidproc_post_options& o) { o.deblock_level = 256; }, "deblock_level is 256, allowed 0 or 21 to 255"},
};

const Refusal<vidproc_exposure_options> kExposure[] = {
    {[](vidproc_exposure_options& o) { o.struct_size = 8; }, "struct_size is 8, allowed "},
    {[](vidproc_exposure_options& o) { o.input.format = 99; }, "input.format is 99, allowed 1 to 5"},
    {[](vidproc_exposure_options& o) { o.input.width = 15; }, "input.width is 15, allowed 16 to 16384"},
    {[](vidproc_exposure_options& o) { o.input.height = 15; }, "input.height is 15, allowed 16 to 16384"},
    {[](vidproc_exposure_options& o) { o.input.siting = 2; }, "input.siting is 2, allowed 0 to 1"},
    {[](vidproc_exposure_options& o) { o.input.width = 4112, o.input.height = 2050; },
     "input.width x input.height is 32896 blocks of 16 x 16", VIDPROC_OK},
    {[](vidproc_exposure_options& o) { o.input.width = 4112, o.input.height = 2064; },
     "input.width x input.height is 33153 blocks of 16 x 16, allowed up to 32896", VIDPROC_ERROR_UNSUPPORTED},
};

/// Every refusal leaves the text and the handle's settings; `configure` returns the status.
template <typename Options, typename Handle, std::size_t kCount>
void ExpectRefusals(const Refusal<Options> (&table)[kCount], const Options& good, Handle* handle,
                    vidproc_status (*configure)(Handle*, const Options*), const char* (*lastError)(const Handle*)) {
  for (const Refusal<Options>& refusal : table) {
    Options options = good;
    refusal.spoil(options);
    EXPECT_EQ(configure(handle, &options), refusal.status) << refusal.text;
    const std::string text = refusal.status == VIDPROC_OK ? "" : refusal.text;
    EXPECT_NE(std::string(lastError(handle)).find(text), std::string::npos) << lastError(handle);
  }
  EXPECT_EQ(configure(handle, nullptr), VIDPROC_ERROR_INVALID_ARGUMENT);
  EXPECT_STREQ(lastError(handle), "options is null, allowed is a struct");
  EXPECT_EQ(configure(handle, &good), VIDPROC_OK);
  EXPECT_STREQ(lastError(handle), "");
}

TEST(Settings, MistakesAreNamed) {
  const vidproc::PreOptions pre = WithSizes<vidproc::PreOptions>(64, 36, 32, 18);
  const vidproc::PostOptions post = WithSizes<vidproc::PostOptions>(64, 36, 32, 18);
  vidproc::ExposureOptions exposure;
  exposure.input = {VIDPROC_FORMAT_UYVY, 64, 36, VIDPROC_SITING_LEFT};
  vidproc::Pre preHandle;
  vidproc::Post postHandle;
  vidproc::Exposure exposureHandle;
  ExpectRefusals<vidproc_pre_options>(kShared<vidproc_pre_options>, pre, preHandle.Get(), vidproc_pre_configure,
                                      vidproc_pre_last_error);
  ExpectRefusals<vidproc_pre_options>(kPre, pre, preHandle.Get(), vidproc_pre_configure, vidproc_pre_last_error);
  ExpectRefusals<vidproc_post_options>(kShared<vidproc_post_options>, post, postHandle.Get(), vidproc_post_configure,
                                       vidproc_post_last_error);
  ExpectRefusals<vidproc_post_options>(kPost, post, postHandle.Get(), vidproc_post_configure, vidproc_post_last_error);
  ExpectRefusals<vidproc_exposure_options>(kExposure, exposure, exposureHandle.Get(), vidproc_exposure_configure,
                                           vidproc_exposure_last_error);
}

/// Both ends of every range, together: all lowest and all highest.
TEST(Settings, EndsOfRangesAreTaken) {
  vidproc::PreOptions pre = WithSizes<vidproc::PreOptions>(2, 1, 2, 1);
  pre.lobes = 1, pre.luma_gain = 1, pre.luma_offset = -255, pre.denoise_softening = 0;
  vidproc::Pre handle(pre);
  pre.input = {VIDPROC_FORMAT_I422, 16384, 1, VIDPROC_SITING_CENTRE};
  pre.output = {VIDPROC_FORMAT_I420, 2, 16384, VIDPROC_SITING_CENTRE};
  pre.alignment = VIDPROC_ALIGNMENT_CORNERS, pre.filter = VIDPROC_FILTER_AREA, pre.taps = 16, pre.softening = 255;
  pre.lobes = 16, pre.sharpening = 16, pre.luma_gain = 127, pre.luma_offset = 255, pre.dither_level = 12;
  pre.dither_seed = 255, pre.denoise_edge = 8, pre.denoise_softening = 255, pre.denoise_taps = 16;
  pre.temporal_strength = 127, pre.temporal_shift = 8, pre.motion_smoothing = 1, pre.denoise_passes = 3;
  pre.denoise_auto = 400;
  EXPECT_NO_THROW(handle.Configure(pre));
  vidproc::PostOptions post = WithSizes<vidproc::PostOptions>(2, 1, 16384, 1);
  post.luma_gain = 127, post.luma_offset = -3, post.deblock_level = 21;
  vidproc::Post postHandle(post);
  post.deblock_level = 255;
  EXPECT_NO_THROW(postHandle.Configure(post));
}

/// What a program gets that was built with a later header: a struct with more behind the fields that are known.
struct LaterOptions {
  vidproc_pre_options known;
  std::int32_t added[2];
};

TEST(Settings, StructsOfLaterVersionsAreReadWhileTheirNewFieldsAreZero) {
  LaterOptions options;
  std::memset(&options, 0x55, sizeof(options));
  ASSERT_EQ(vidproc_pre_options_init(&options.known, sizeof(options)), VIDPROC_OK);
  EXPECT_EQ(options.known.struct_size, sizeof(options));
  EXPECT_EQ(options.added[0] | options.added[1], 0);
  options.known.input = options.known.output = {VIDPROC_FORMAT_NV12, 64, 36, VIDPROC_SITING_LEFT};
  vidproc::Pre pre;
  EXPECT_EQ(vidproc_pre_configure(pre.Get(), &options.known), VIDPROC_OK);
  options.added[1] = 0x01010101;
  EXPECT_EQ(vidproc_pre_configure(pre.Get(), &options.known), VIDPROC_ERROR_UNSUPPORTED);
  const std::string offset = std::to_string(sizeof(vidproc_pre_options) + 4);
  EXPECT_EQ(vidproc_pre_last_error(pre.Get()), "byte " + offset + " of the options is set, allowed is 0 from byte " +
                                                   std::to_string(sizeof(vidproc_pre_options)) + " on in version " +
                                                   vidproc_version_string());
}

TEST(Settings, DefaultsDoNothingButScale) {
  vidproc_pre_options pre;
  EXPECT_EQ(vidproc_pre_options_init(nullptr, sizeof(pre)), VIDPROC_ERROR_INVALID_ARGUMENT);
  EXPECT_EQ(vidproc_pre_options_init(&pre, sizeof(pre) - 1), VIDPROC_ERROR_INVALID_ARGUMENT);
  EXPECT_EQ(vidproc_pre_options_init(&pre, 4097), VIDPROC_ERROR_INVALID_ARGUMENT);
  std::memset(&pre, 0x55, sizeof(pre));
  ASSERT_EQ(vidproc_pre_options_init(&pre, sizeof(pre)), VIDPROC_OK);
  vidproc_pre_options expected = {};
  expected.struct_size = sizeof(pre);
  expected.taps = expected.denoise_taps = 8;
  expected.lobes = 3;
  expected.luma_gain = 64;
  expected.dither_seed = -1;
  expected.denoise_softening = 10;
  expected.denoise_passes = 1;
  EXPECT_EQ(std::memcmp(&pre, &expected, sizeof(pre)), 0);
  vidproc_post_options post;
  std::memset(&post, 0x55, sizeof(post));
  ASSERT_EQ(vidproc_post_options_init(&post, sizeof(post)), VIDPROC_OK);
  EXPECT_EQ(post.deblock_level, 0);
  // The rest lies where the pre-processor has it.
  post.struct_size = pre.struct_size;
  EXPECT_EQ(std::memcmp(&pre, &post, offsetof(vidproc_post_options, deblock_level)), 0);
}

/// Every setting between the frames' infos and the end of the struct is listed, and its range is the one that holds.
template <typename Options, typename Stream>
void ExpectListed(const vidproc_option* (*optionAt)(std::int32_t)) {
  EXPECT_EQ(optionAt(-1), nullptr);
  const auto options = WithSizes<Options>(64, 36, 32, 18);
  std::size_t end = offsetof(Options, alignment);
  for (std::int32_t number = 0; const vidproc_option* const option = optionAt(number); ++number) {
    SCOPED_TRACE(option->name);
    EXPECT_EQ(option->offset, end);
    end += sizeof(std::int32_t);
    EXPECT_NE(std::string(option->text), "");
    Stream stream(options);
    const auto take = [&](std::int32_t value) {
      Options changed = options;
      std::memcpy(reinterpret_cast<char*>(&changed) + option->offset, &value, sizeof(value));
      stream.Configure(changed);
    };
    for (const std::int32_t value : {option->low, option->high, option->also}) EXPECT_NO_THROW(take(value));
    for (const std::int32_t value : {option->low - 1, option->high + 1}) EXPECT_THROW(take(value), vidproc::Error);
    EXPECT_EQ(std::memcmp(&option->default_value, reinterpret_cast<const char*>(&options) + option->offset, 4), 0);
    if (option->choices == nullptr) continue;
    for (std::int32_t value = 0; value <= option->high; ++value) EXPECT_NE(option->choices[value], nullptr);
    EXPECT_EQ(option->choices[option->high + 1], nullptr);
  }
  EXPECT_EQ(end, sizeof(Options));
}

TEST(Settings, AreListedWithTheirRanges) {
  ExpectListed<vidproc::PreOptions, vidproc::Pre>(vidproc_pre_option);
  ExpectListed<vidproc::PostOptions, vidproc::Post>(vidproc_post_option);
}

/// A stream passes through where frames come out as they went in; tried with noise, which any filter changes.
template <typename Options, typename Stream>
void ExpectPassing(bool passes, void (*change)(Options&)) {
  for (const vidproc_format format : kFormats) {
    Options options;
    options.input = options.output = {format, 41, 23, VIDPROC_SITING_LEFT};
    options.dither_seed = 1;
    change(options);
    Stream stream(options);
    EXPECT_EQ(stream.PassesThrough(), passes) << format;
    TightFrame in(options.input, 0), out(options.output, 0);
    FastNoise noise(1);
    for (std::uint8_t& byte : in.bytes) byte = noise.Byte();
    const std::size_t secondLuma = format == VIDPROC_FORMAT_UYVY ? 3 : 2;  // of the last pair, beyond the picture
    constexpr std::size_t kRowBytes = 84, kLastPair = 80;                  // 41 pixels in 21 pairs
    for (std::size_t row = 0; IsPacked(format) && row < 23; ++row) {
      std::uint8_t* const luma = &in.bytes[row * kRowBytes + kLastPair + secondLuma];
      luma[0] = luma[-2];
    }
    stream.Process(in.Read(), out.Write());
    EXPECT_EQ(in.bytes == out.bytes, passes) << format;
  }
}

TEST(Settings, ThatChangeNothingAreToldApart) {
  using Pre = vidproc::PreOptions;
  using Post = vidproc::PostOptions;
  for (const auto change : std::initializer_list<void (*)(Pre&)>{
           [](Pre&) {},
           [](Pre& o) { o.filter = VIDPROC_FILTER_LANCZOS, o.taps = 16, o.alignment = VIDPROC_ALIGNMENT_CORNERS; },
           [](Pre& o) { o.denoise_softening = 99, o.denoise_passes = 3, o.temporal_shift = 2; },
       }) {
    ExpectPassing<Pre, vidproc::Pre>(true, change);
  }
  for (const auto change : std::initializer_list<void (*)(Pre&)>{
           [](Pre& o) { o.sharpening = 3; },
           [](Pre& o) { o.filter = VIDPROC_FILTER_GAUSSIAN, o.softening = 30; },
           [](Pre& o) { o.output.siting = VIDPROC_SITING_CENTRE; },
           [](Pre& o) { o.output.width = 40; },
           [](Pre& o) { o.luma_offset = 1; },
           [](Pre& o) { o.dither_level = 5; },
           [](Pre& o) { o.denoise_edge = 1; },
       }) {
    ExpectPassing<Pre, vidproc::Pre>(false, change);
  }
  ExpectPassing<Post, vidproc::Post>(true, [](Post&) {});
  ExpectPassing<Post, vidproc::Post>(false, [](Post& o) { o.deblock_level = 90; });
  // Their first frames come out as they went in, later ones need not.
  for (auto [field, value] : {std::pair(&Pre::temporal_strength, 9), std::pair(&Pre::denoise_auto, 100)}) {
    auto options = WithSizes<Pre>(64, 36, 64, 36);
    options.output = options.input;
    options.*field = value;
    EXPECT_FALSE(vidproc::Pre(options).PassesThrough());
  }
  vidproc::Pre pre;
  std::int32_t passes = 7;
  EXPECT_EQ(vidproc_pre_passes_through(pre.Get(), &passes), VIDPROC_ERROR_NOT_CONFIGURED);
  EXPECT_EQ(vidproc_pre_passes_through(pre.Get(), nullptr), VIDPROC_ERROR_INVALID_ARGUMENT);
  EXPECT_EQ(passes, 7);
}

}  // namespace
