// Handles of the checked interface: what they do before they are configured, when memory is out and after a refusal;
// null everywhere; the texts of the library as a whole; and the C++ front.
#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "support/allocation_log.h"
#include "support/api_frames.h"
#include "support/failing_malloc.h"
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

vidproc::PreOptions WebcamOptions() {
  vidproc::PreOptions options("webcam");
  const vidproc::PreOptions sizes = DenoisingOptions();
  options.input = sizes.input, options.output = sizes.output, options.motion_smoothing = 1;
  return options;
}

/// A handle and the camera before it, whose picture drifts.
struct Camera {
  explicit Camera(const vidproc::PreOptions& options) : options(options), pre(options), picture(options.input, 128) {}

  std::vector<std::uint8_t> ProcessNext() {
    const vidproc_frame_info& info = options.input;
    const int rows = static_cast<int>(picture.bytes.size()) / info.width;
    Paint(Content::kDrift, info.width, rows, random, picture.bytes);
    TightFrame result(options.output, 0);
    pre.Process(picture.Read(), result.Write());
    return result.bytes;
  }

  const vidproc::PreOptions options;
  vidproc::Pre pre;
  TightFrame picture;
  Random random{1};
};

/// Two handles see the same frames; in between one is asked for what it must refuse.
TEST(Handles, WorkOnAsBeforeAfterARefusal) {
  Camera tried(DenoisingOptions()), spared(DenoisingOptions());
  EXPECT_EQ(tried.ProcessNext(), spared.ProcessNext());
  vidproc::PreOptions other = tried.options;
  other.input.width = 50, other.output.format = VIDPROC_FORMAT_UYVY, other.filter = 77;
  EXPECT_EQ(vidproc_pre_configure(tried.pre.Get(), &other), VIDPROC_ERROR_INVALID_ARGUMENT);
  EXPECT_EQ(tried.ProcessNext(), spared.ProcessNext());
  // Memory runs out wherever some is taken.
  other.filter = VIDPROC_FILTER_AUTOMATIC;
  const auto configureWithout = [&](std::size_t allocation) {
    const AllocationLog log({allocation});
    return vidproc_pre_configure(tried.pre.Get(), &other);
  };
  std::size_t allocations = 0;
  for (; configureWithout(allocations) != VIDPROC_OK; ++allocations) {
    ASSERT_EQ(configureWithout(allocations), VIDPROC_ERROR_OUT_OF_MEMORY);
    ASSERT_STREQ(vidproc_pre_last_error(tried.pre.Get()), "out of memory for these frames and settings");
    ASSERT_EQ(tried.ProcessNext(), spared.ProcessNext());
  }
  EXPECT_GT(allocations, 2u);
}

TEST(Handles, ExposureWorksOnAsBeforeWhenMemoryIsOut) {
  vidproc::ExposureOptions options;
  options.input = {VIDPROC_FORMAT_NV12, 32, 32, VIDPROC_SITING_LEFT};
  vidproc::Exposure exposure(options);
  const TightFrame frame(options.input, 90);
  const vidproc_input input = frame.Read();
  options.input.width = 48;
  const auto configureWithout = [&](int allocation) {
    const FailingMalloc failing(allocation);
    return vidproc_exposure_configure(exposure.Get(), &options);
  };
  int allocations = 0;
  for (; configureWithout(allocations) != VIDPROC_OK; ++allocations) {
    ASSERT_STREQ(vidproc_exposure_last_error(exposure.Get()), "out of memory for these frames and settings");
    ASSERT_EQ(exposure.Process(input), VIDPROC_EXPOSURE_NONE);
    ASSERT_EQ(vidproc_exposure_process(exposure.Get(), &input, nullptr), VIDPROC_ERROR_INVALID_ARGUMENT);
    ASSERT_STREQ(vidproc_exposure_last_error(exposure.Get()), "event is null, allowed is a place for it");
  }
  EXPECT_GT(allocations, 2);
}

/// History, noise estimate and strength belong to the picture: they go on as long as input size and sampling stay.
TEST(Handles, HistoryOutlivesOtherSettings) {
  constexpr struct {
    void (*apply)(vidproc::PreOptions&);
    bool keepsHistory;
  } kChanges[] = {
      {[](vidproc::PreOptions&) {}, true},
      {[](vidproc::PreOptions& o) { o.input.format = VIDPROC_FORMAT_NV12; }, true},
      {[](vidproc::PreOptions& o) {
         o.output = {VIDPROC_FORMAT_UYVY, 30, 20, 0}, o.filter = VIDPROC_FILTER_AREA;
       },
       true},
      {[](vidproc::PreOptions& o) { o.input.format = VIDPROC_FORMAT_I422; }, false},
      {[](vidproc::PreOptions& o) { o.input.height -= 2; }, false},
      {[](vidproc::PreOptions& o) { o.denoise_edge = o.temporal_strength = o.denoise_auto = 0; }, false},
  };
  for (const auto& change : kChanges) {
    for (const vidproc::PreOptions& options : {DenoisingOptions(), WebcamOptions()}) {
      SCOPED_TRACE(&change - kChanges);
      Camera changed(options), kept(options);
      for (int frame = 0; frame < 3; ++frame) ASSERT_EQ(changed.ProcessNext(), kept.ProcessNext());
      vidproc::PreOptions other = options;
      change.apply(other);
      changed.pre.Configure(other);
      changed.pre.Configure(options);
      if (!change.keepsHistory) kept.pre.Reset();
      EXPECT_EQ(changed.pre.Noise(), kept.pre.Noise());
      EXPECT_EQ(changed.ProcessNext(), kept.ProcessNext());
    }
  }
}

TEST(Handles, HistoryEndsWithAReset) {
  Camera camera(DenoisingOptions());
  const auto first = camera.ProcessNext(), second = camera.ProcessNext();
  for (const bool isReset : {true, false}) {
    camera.random = Random(1);
    camera.picture.bytes.assign(camera.picture.bytes.size(), 128);
    if (isReset) camera.pre.Reset();
    EXPECT_EQ(camera.ProcessNext() == first, isReset);
    EXPECT_EQ(camera.ProcessNext() == second, isReset);
  }
}

template <typename Functions>
void ExpectNullIsRefused(const char* text) {
  using Handle = typename Functions::Handle;
  EXPECT_EQ(Functions::Create(nullptr), VIDPROC_ERROR_INVALID_ARGUMENT);
  EXPECT_EQ(Functions::Reset(nullptr), VIDPROC_ERROR_INVALID_ARGUMENT);
  EXPECT_STREQ(Functions::LastError(nullptr), text);
  Functions::Destroy(nullptr);
  Handle* handle = reinterpret_cast<Handle*>(&handle);
  {
    const AllocationLog log({0});
    EXPECT_EQ(Functions::Create(&handle), VIDPROC_ERROR_OUT_OF_MEMORY);
  }
  EXPECT_EQ(handle, nullptr);
  ASSERT_EQ(Functions::Create(&handle), VIDPROC_OK);
  EXPECT_STREQ(Functions::LastError(handle), "");
  EXPECT_EQ(Functions::Reset(handle), VIDPROC_OK);
  Functions::Destroy(handle);
}

TEST(Handles, AreRefusedWhileNullOrNotConfigured) {
  ExpectNullIsRefused<vidproc::detail::PreFunctions>("pre is null");
  ExpectNullIsRefused<vidproc::detail::PostFunctions>("post is null");
  ExpectNullIsRefused<vidproc::detail::ExposureFunctions>("exposure is null");
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
