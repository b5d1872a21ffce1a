// Presets, and denoising that follows the camera's noise.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

#include "support/api_frames.h"
#include "support/frame_content.h"
#include "vidproc/vidproc.hpp"

namespace {

using namespace testing_support;

TEST(Presets, AreDefaultsButForTheirFields) {
  struct Expected {
    const char* name;
    int taps, denoiseAuto;
  };
  const Expected presets[] = {
      {"webcam", 16, 100}, {"low-light", 16, 100}, {"low-bandwidth", 16, 100}, {"screen", 16, 0}, {"none", 8, 0}};
  std::int32_t number = 0;
  for (const Expected& expected : presets) {
    SCOPED_TRACE(expected.name);
    EXPECT_STREQ(vidproc_pre_preset(number++), expected.name);
    vidproc::PreOptions options;
    options.taps = expected.taps, options.denoise_auto = expected.denoiseAuto;
    const vidproc::PreOptions preset(expected.name);
    EXPECT_EQ(std::memcmp(&preset, &options, sizeof(options)), 0);
  }
  EXPECT_EQ(vidproc_pre_preset(number), nullptr);
  EXPECT_EQ(vidproc_pre_preset(-1), nullptr);
  number = 0;
  for (const char* name : {"camera", "screen-share", "none"}) {
    EXPECT_STREQ(vidproc_post_preset(number++), name);
    vidproc::PostOptions options;
    options.taps = std::string(name) == "none" ? 8 : 16;
    const vidproc::PostOptions preset(name);
    EXPECT_EQ(std::memcmp(&preset, &options, sizeof(options)), 0) << name;
  }
  EXPECT_EQ(vidproc_post_preset(number), nullptr);
}

TEST(Presets, RefuseUnknownNamesAndSizes) {
  vidproc_pre_options options;
  std::memset(&options, 0x55, sizeof(options));
  const vidproc_pre_options before = options;
  for (const char* name : {static_cast<const char*>(nullptr), "", "Webcam", "camera"}) {
    EXPECT_EQ(vidproc_pre_options_preset(&options, sizeof(options), name), VIDPROC_ERROR_INVALID_ARGUMENT);
    EXPECT_THROW(vidproc::PreOptions{name}, vidproc::Error);
  }
  EXPECT_EQ(vidproc_pre_options_preset(&options, 4097, "webcam"), VIDPROC_ERROR_INVALID_ARGUMENT);
  EXPECT_EQ(vidproc_pre_options_preset(nullptr, sizeof(options), "webcam"), VIDPROC_ERROR_INVALID_ARGUMENT);
  EXPECT_EQ(std::memcmp(&options, &before, sizeof(options)), 0);
}

/// A webcam's stream: `amplitude` is of evenly spread noise around a slope.
class Stream {
 public:
  explicit Stream(vidproc_format format, std::int32_t motionSmoothing = 0) : options("webcam") {
    options.input = {format, 96, 64, VIDPROC_SITING_LEFT};
    options.output = {VIDPROC_FORMAT_I420, 48, 32, VIDPROC_SITING_LEFT};
    options.motion_smoothing = motionSmoothing;
    pre.Configure(options);
  }

  std::vector<std::uint8_t> Show(int amplitude, int level = 90, int slope = 1) {
    TightFrame camera(options.input, 0), result(options.output, 0);
    int column = 0;
    for (std::uint8_t& byte : camera.bytes) {
      byte = static_cast<std::uint8_t>(level + slope * (column++ % 96 / 2) + random.Between(-amplitude, amplitude));
    }
    pre.Process(camera.Read(), result.Write());
    return result.bytes;
  }

  Random random{8};
  vidproc::PreOptions options;
  vidproc::Pre pre;
};

/// From no noise through all strengths and back.
constexpr int kAmplitudes[] = {0,  0,  2,  2,  3,  3,  4,  4,  5,  5, 7, 7, 9, 9, 12,
                               12, 12, 12, 12, 20, 20, 20, 20, 20, 1, 1, 1, 1, 1, 1};

TEST(AutomaticDenoising, FollowsTheNoiseAndStartsAfreshAfterAReset) {
  for (const vidproc_format format : kFormats) {
    Stream stream(format, format % 2);  // motion smoothing in every other format
    std::vector<std::vector<std::uint8_t>> runs[2];
    for (auto& run : runs) {
      std::vector<std::int32_t> noise;
      stream.random = Random(9);
      for (const int amplitude : kAmplitudes) {
        run.push_back(stream.Show(amplitude));
        noise.push_back(stream.pre.Noise());
      }
      EXPECT_EQ(noise.front(), 0);
      EXPECT_GT(*std::max_element(noise.begin(), noise.end()), 900) << "the last step is reached";
      EXPECT_LT(noise.back(), 90) << "the first step again";
      stream.pre.Reset();
      EXPECT_EQ(stream.pre.Noise(), 0);
    }
    EXPECT_EQ(runs[0], runs[1]);
  }
}

/// Of luma, from the same flat field without noise.
double MeanError(const std::vector<std::uint8_t>& result, int level) {
  double sum = 0;
  for (int i = 0; i < 48 * 32; ++i) sum += result[static_cast<std::size_t>(i)] - level;
  return sum / (48 * 32);
}

/// The new scene differs by so little that the history still counts for something, or by so much that it must not.
TEST(AutomaticDenoising, LeavesNothingOfASceneTwoFramesAfterACut) {
  for (const int amplitude : {3, 7, 15}) {
    for (const int step : {5, 9, 14, 40}) {
      Stream stream(VIDPROC_FORMAT_I420);
      std::vector<std::uint8_t> result;
      for (int frame = 0; frame < 14; ++frame) result = stream.Show(amplitude, 90, 0);
      EXPECT_NEAR(MeanError(result, 90), 0, 0.5);
      for (int frame = 0; frame < 3; ++frame) result = stream.Show(amplitude, 90 + step, 0);
      EXPECT_NEAR(MeanError(result, 90 + step), 0, 1.5) << "noise " << amplitude << ", step " << step;
    }
  }
}

TEST(AutomaticDenoising, RefusesToTellBeforeItKnows) {
  vidproc::Pre pre;
  std::int32_t noise = 5;
  EXPECT_EQ(vidproc_pre_noise(pre.Get(), &noise), VIDPROC_ERROR_NOT_CONFIGURED);
  EXPECT_EQ(vidproc_pre_noise(nullptr, &noise), VIDPROC_ERROR_INVALID_ARGUMENT);
  EXPECT_EQ(vidproc_pre_noise(pre.Get(), nullptr), VIDPROC_ERROR_INVALID_ARGUMENT);
  EXPECT_STREQ(vidproc_pre_last_error(pre.Get()), "noise is null, allowed is a place for it");
  EXPECT_EQ(noise, 5);
}

}  // namespace
