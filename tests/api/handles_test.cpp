// Handles of the checked interface: what they do before they are configured, when memory is out and after a refusal;
// null everywhere; the texts of the library as a whole; and the C++ front.
#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "support/allocation_log.h"
#include "support/api_frames.h"
#include "support/frame_content.h"
#include "support/kernel_harness.h"
#include "vidproc/vidproc.hpp"

namespace {

using namespace testing_support;

vidproc::PreOptions DenoisingOptions() {
  auto options = WithSizes<vidproc::PreOptions>(70, 34, 40, 30);
  options.denoise_edge = 2, options.temporal_strength = 100, options.temporal_shift = 2, options.motion_smoothing = 1;
  options.dither_level = 4, options.dither_seed = 1;
  return options;
}

std::vector<std::uint8_t> ProcessNoise(vidproc_pre* pre, const vidproc::PreOptions& options, Random& random) {
  TightFrame camera(options.input, 0), result(options.output, 0);
  for (std::uint8_t& byte : camera.bytes) byte = random.Byte();
  const vidproc_input input = camera.Read();
  const vidproc_output output = result.Write();
  EXPECT_EQ(vidproc_pre_process(pre, &input, &output), VIDPROC_OK) << vidproc_pre_last_error(pre);
  return result.bytes;
}

/// Two handles see the same frames; in between one is asked for what it must refuse.
TEST(Handles, WorkOnAsBeforeAfterARefusal) {
  const vidproc::PreOptions options = DenoisingOptions();
  vidproc::Pre tried(options), spared(options);
  Random random(1), sameRandom(1);
  const auto expectEqualFrames = [&] {
    EXPECT_EQ(ProcessNoise(tried.Get(), options, random), ProcessNoise(spared.Get(), options, sameRandom));
  };
  expectEqualFrames();
  vidproc::PreOptions other = options;
  other.input.width = 50, other.output.format = VIDPROC_FORMAT_UYVY, other.filter = 77;
  EXPECT_EQ(vidproc_pre_configure(tried.Get(), &other), VIDPROC_ERROR_INVALID_ARGUMENT);
  expectEqualFrames();
  // Memory runs out wherever some is taken.
  other.filter = VIDPROC_FILTER_AUTOMATIC;
  const auto configureWithout = [&](std::size_t allocation) {
    const AllocationLog log({allocation});
    return vidproc_pre_configure(tried.Get(), &other);
  };
  std::size_t allocations = 0;
  for (; configureWithout(allocations) != VIDPROC_OK; ++allocations) {
    ASSERT_EQ(configureWithout(allocations), VIDPROC_ERROR_OUT_OF_MEMORY);
    ASSERT_STREQ(vidproc_pre_last_error(tried.Get()), "out of memory for these frames and settings");
    expectEqualFrames();
  }
  EXPECT_GT(allocations, 2u);
  ProcessNoise(tried.Get(), other, random);
}

TEST(Handles, TakeNoMemoryInAFrameCall) {
  const vidproc::PreOptions options = DenoisingOptions();
  vidproc::Pre pre(options);
  TightFrame camera(options.input, 90), result(options.output, 0);
  const vidproc_input input = camera.Read();
  const vidproc_output output = result.Write();
  const AllocationLog log;
  for (int frame = 0; frame < 3; ++frame) {
    EXPECT_EQ(vidproc_pre_process(pre.Get(), &input, &output), VIDPROC_OK);
    EXPECT_EQ(vidproc_pre_process(pre.Get(), &input, nullptr), VIDPROC_ERROR_INVALID_ARGUMENT);
    EXPECT_EQ(vidproc_pre_reset(pre.Get()), VIDPROC_OK);
  }
  EXPECT_EQ(log.Total(), 0u);
}

TEST(Handles, HistoryEndsWithAResetAndOutlivesOtherSettings) {
  vidproc::PreOptions options = DenoisingOptions();
  vidproc::Pre pre(options);
  const auto show = [&](std::uint8_t level) {
    TightFrame camera(options.input, level), result(options.output, 0);
    pre.Process(camera.Read(), result.Write());
    return result.bytes;
  };
  const auto dark = show(100);
  const auto blended = show(104);
  pre.Reset();
  EXPECT_EQ(show(100), dark);
  // Neither output, format of equal sampling nor settings touch it.
  options.output.width = 20, options.denoise_edge = 4, options.input.format = VIDPROC_FORMAT_NV12;
  pre.Configure(options);
  options = DenoisingOptions();
  pre.Configure(options);
  EXPECT_EQ(show(104), blended);
  pre.Reset();
  show(100);
  // Another sampling does.
  options.input.format = VIDPROC_FORMAT_I422;
  pre.Configure(options);
  options = DenoisingOptions();
  pre.Configure(options);
  const auto first = show(104);
  pre.Reset();
  EXPECT_EQ(show(104), first);
  EXPECT_NE(first, blended);
}

/// Scaling by more than the taps hold goes through several passes; what they read of the denoised rows, and in which
/// order, differs from level to level.
TEST(Handles, DenoiseEveryRowOnceOnALongWayDown) {
  vidproc::PreOptions options = DenoisingOptions();
  options.input.height = 250, options.output.height = 9;
  std::vector<std::uint8_t> expected;
  for (const vidproc::Level level : AvailableLevels()) {
    vidproc_cap_level(vidproc::LevelName(level));
    vidproc::Pre pre(options);
    Random random(5);
    ProcessNoise(pre.Get(), options, random);
    const std::vector<std::uint8_t> result = ProcessNoise(pre.Get(), options, random);
    if (expected.empty()) expected = result;
    EXPECT_EQ(result, expected) << vidproc::LevelName(level);
  }
  vidproc_cap_level(nullptr);
}

template <typename Handle>
void ExpectNullIsRefused(vidproc_status (*create)(Handle**), vidproc_status (*reset)(Handle*),
                         const char* (*lastError)(const Handle*), void (*destroy)(Handle*), const char* text) {
  EXPECT_EQ(create(nullptr), VIDPROC_ERROR_INVALID_ARGUMENT);
  EXPECT_EQ(reset(nullptr), VIDPROC_ERROR_INVALID_ARGUMENT);
  EXPECT_STREQ(lastError(nullptr), text);
  destroy(nullptr);
  Handle* handle = reinterpret_cast<Handle*>(&handle);
  {
    const AllocationLog log({0});
    EXPECT_EQ(create(&handle), VIDPROC_ERROR_OUT_OF_MEMORY);
  }
  EXPECT_EQ(handle, nullptr);
  ASSERT_EQ(create(&handle), VIDPROC_OK);
  EXPECT_STREQ(lastError(handle), "");
  EXPECT_EQ(reset(handle), VIDPROC_OK);
  destroy(handle);
}

TEST(Handles, AreRefusedWhileNullOrNotConfigured) {
  ExpectNullIsRefused(vidproc_pre_create, vidproc_pre_reset, vidproc_pre_last_error, vidproc_pre_destroy,
                      "pre is null");
  ExpectNullIsRefused(vidproc_post_create, vidproc_post_reset, vidproc_post_last_error, vidproc_post_destroy,
                      "post is null");
  ExpectNullIsRefused(vidproc_exposure_create, vidproc_exposure_reset, vidproc_exposure_last_error,
                      vidproc_exposure_destroy, "exposure is null");
  const auto options = WithSizes<vidproc::PostOptions>(8, 8, 8, 8);
  TightFrame in(options.input, 0), out(options.output, 7);
  const vidproc_input input = in.Read();
  const vidproc_output output = out.Write();
  vidproc_exposure_event event = 99;
  EXPECT_EQ(vidproc_pre_process(nullptr, &input, &output), VIDPROC_ERROR_INVALID_ARGUMENT);
  EXPECT_EQ(vidproc_post_configure(nullptr, &options), VIDPROC_ERROR_INVALID_ARGUMENT);
  EXPECT_EQ(vidproc_exposure_process(nullptr, &input, &event), VIDPROC_ERROR_INVALID_ARGUMENT);
  vidproc::Post post;
  vidproc::Exposure exposure;
  EXPECT_EQ(vidproc_post_process(post.Get(), &input, &output), VIDPROC_ERROR_NOT_CONFIGURED);
  EXPECT_STREQ(vidproc_post_last_error(post.Get()), "the handle is not configured, allowed after _configure");
  EXPECT_EQ(vidproc_exposure_process(exposure.Get(), &input, &event), VIDPROC_ERROR_NOT_CONFIGURED);
  EXPECT_EQ(event, 99);
  EXPECT_EQ(out.bytes, std::vector<std::uint8_t>(out.bytes.size(), 7));
}

TEST(Library, NamesVersionStatusesAndLevels) {
  EXPECT_EQ(vidproc_version_number(), static_cast<std::uint32_t>(VIDPROC_VERSION_NUMBER));
  EXPECT_STREQ(vidproc_version_string(), VIDPROC_PROJECT_VERSION);
  EXPECT_STREQ(vidproc_status_text(VIDPROC_OK), "success");
  EXPECT_STREQ(vidproc_status_text(VIDPROC_ERROR_OVERLAP), "frames overlap");
  for (const vidproc_status status : {-1, VIDPROC_ERROR_OVERLAP + 1, INT32_MIN, INT32_MAX}) {
    EXPECT_STREQ(vidproc_status_text(status), "unknown status");
  }
  const std::string best = vidproc_level();
  for (const vidproc::Level level : AvailableLevels()) {
    EXPECT_EQ(vidproc_cap_level(vidproc::LevelName(level)), VIDPROC_OK);
    EXPECT_STREQ(vidproc_level(), vidproc::LevelName(level));
  }
  EXPECT_EQ(vidproc_cap_level("scalar"), VIDPROC_OK);
  EXPECT_EQ(vidproc_cap_level("AVX2"), VIDPROC_ERROR_INVALID_ARGUMENT);
  EXPECT_STREQ(vidproc_level(), "scalar");
  EXPECT_EQ(vidproc_cap_level(nullptr), VIDPROC_OK);
  EXPECT_EQ(vidproc_level(), best);
}

TEST(CppFront, ThrowsStatusAndText) {
  auto options = WithSizes<vidproc::PreOptions>(8, 8, 1, 8);
  try {
    const vidproc::Pre pre(options);
    FAIL();
  } catch (const vidproc::Error& error) {
    EXPECT_EQ(error.Status(), VIDPROC_ERROR_INVALID_ARGUMENT);
    EXPECT_STREQ(error.what(), "invalid argument: output.width is 1, allowed 2 to 16384");
  }
  std::vector<std::uint8_t> memory(95);
  try {
    vidproc::OutputOver(options.input, memory);
    FAIL();
  } catch (const vidproc::Error& error) {
    EXPECT_STREQ(error.what(), "buffer too small: memory is 95 bytes, allowed 96 or more, not null");
  }
  EXPECT_THROW(vidproc::FrameBytes(options.output), vidproc::Error);
}

TEST(CppFront, OwnersMove) {
  const auto options = WithSizes<vidproc::PostOptions>(8, 8, 8, 8);
  TightFrame in(options.input, 50), out(options.output, 0);
  vidproc::Post first(options);
  vidproc::Post second(std::move(first));
  EXPECT_NO_THROW(second.Process(in.Read(), out.Write()));
  EXPECT_THROW(first.Process(in.Read(), out.Write()), vidproc::Error);  // NOLINT(bugprone-use-after-move)
  first = std::move(second);
  EXPECT_NO_THROW(first.Process(in.Read(), out.Write()));
  EXPECT_EQ(out.bytes, std::vector<std::uint8_t>(out.bytes.size(), 50));
}

}  // namespace
