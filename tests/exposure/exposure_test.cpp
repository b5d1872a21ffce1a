// The auto-exposure service: the limits that blocks match within, and the life of its handle. What it makes of streams
// is compared in exposure_stream_test.cpp.
#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <string>
#include <vector>

#include "exposure/auto_exposure.h"
#include "support/failing_malloc.h"
#include "support/kernel_harness.h"
#include "vidproc/video_processor.h"

namespace {

using vidproc::AutoExposureState;

/// Samples of a block that are alike.
struct Group {
  int count, reference, frame;
};

TEST(ExposureTest, MatchesBlocksUpToTheExactLimits) {
  // Ratio of the means, correlation (both in 65536ths) and variance (in 256ths) lie at their limits or next to them; of
  // the correlations of flat blocks near 0.6, none comes nearer to the limit.
  const struct {
    const char* limit;
    bool matches;
    std::vector<Group> samples;
  } kCases[] = {
      {"ratio 58982", false, {{142, 229, 254}, {114, 229, 255}}},
      {"ratio 58983", true, {{143, 229, 254}, {113, 229, 255}}},
      {"ratio 72088", true, {{46, 255, 231}, {210, 255, 232}}},
      {"ratio 72089", false, {{23, 254, 230}, {233, 254, 231}}},
      {"correlation 52428", false, {{90, 101, 95}, {11, 101, 90}, {155, 93, 92}}},
      {"correlation 52429", true, {{38, 95, 86}, {166, 118, 116}, {52, 94, 107}}},
      {"correlation 39321, flat", false, {{79, 150, 152}, {24, 153, 153}, {153, 150, 149}}},
      {"correlation 39329, flat", true, {{160, 200, 206}, {93, 199, 210}, {3, 178, 188}}},
      {"variance 2999 of the frame", true, {{16, 157, 158}, {111, 161, 164}, {129, 160, 157}}},
      {"variance 3000 of the frame", false, {{145, 92, 93}, {56, 98, 92}, {55, 99, 101}}},
      {"variance 2999 of the reference", true, {{6, 140, 143}, {143, 137, 138}, {107, 144, 139}}},
      {"variance 3000 of the reference", false, {{182, 165, 163}, {30, 175, 170}, {44, 163, 167}}},
  };
  for (const auto& block : kCases) {
    SCOPED_TRACE(block.limit);
    void* watcher = nullptr;
    VidProcAdjustAutoExposureInit(&watcher, 16, 16, 0);
    const auto show = [&](int Group::*level, int frames) {
      std::vector<std::uint8_t> frame;
      for (const Group& group : block.samples) {
        for (int i = 0; i < group.count; ++i) frame.insert(frame.end(), {77, static_cast<std::uint8_t>(group.*level)});
      }
      for (int i = 0; i < frames; ++i) VidProcAdjustAutoExposure(watcher, frame.data());
    };
    show(&Group::reference, 22);
    show(&Group::frame, 1);
    const Group& first = block.samples[0];
    EXPECT_EQ(static_cast<const AutoExposureState*>(watcher)->currentLevel,
              block.matches ? first.frame : first.reference);
    VidProcAdjustAutoExposureCleanup(&watcher);
  }
}

TEST(ExposureHandleTest, StartsFromItsInitialValues) {
  void* handle = nullptr;
  VidProcAdjustAutoExposureInit(&handle, 20, 18, -5);
  ASSERT_NE(handle, nullptr);
  const auto& state = *static_cast<AutoExposureState*>(handle);
  EXPECT_EQ(state.width, 20);
  EXPECT_EQ(state.height, 18);
  EXPECT_EQ(state.initParam, -5);
  EXPECT_EQ(state.unusedWord, 0);
  void* const first = handle;
  VidProcAdjustAutoExposureInit(&handle, 40, 40, 0);
  EXPECT_EQ(handle, first);
  EXPECT_EQ(state.width, 20) << "a filled handle is left alone";

  EXPECT_EQ(VidProcAdjustAutoExposure(handle, nullptr), -1);
  EXPECT_EQ(state.frameCount, 0);

  VidProcAdjustAutoExposureCleanup(&handle);
  EXPECT_EQ(handle, nullptr);
  VidProcAdjustAutoExposureCleanup(&handle);
  EXPECT_EQ(handle, nullptr);
}

TEST(ExposureHandleTest, ToleratesNulls) {
  std::uint8_t frame[2] = {};
  EXPECT_EQ(VidProcAdjustAutoExposure(nullptr, frame), -1);
  VidProcAdjustAutoExposureInit(nullptr, 16, 16, 0);
  VidProcAdjustAutoExposureCleanup(nullptr);
}

TEST(ExposureHandleTest, RefusesSizes) {
  constexpr int kMost = std::numeric_limits<int>::max(), kLeast = std::numeric_limits<int>::min();
  constexpr int kSizes[][2] = {{0, 16},          {16, 0},      {-1, 16},     {16, -16},      {-16, -16},
                               {kLeast, kLeast}, {1 << 30, 1}, {1, 1 << 30}, {32768, 32768}, {kMost, kMost}};
  for (const auto& [width, height] : kSizes) {
    void* handle = nullptr;
    VidProcAdjustAutoExposureInit(&handle, width, height, 0);
    EXPECT_EQ(handle, nullptr) << width << "x" << height;
  }
}

TEST(ExposureHandleTest, GivesEverythingBackWhenMemoryIsOut) {
  void* handle = nullptr;
  int failures = 0;
  for (; handle == nullptr && failures < 100; ++failures) {
    const testing_support::FailingMalloc failing(failures);
    VidProcAdjustAutoExposureInit(&handle, 40, 33, 0);
  }
  EXPECT_EQ(failures - 1, 8) << "the record, two frames, the reference's luma and figures, and three tables";
  VidProcAdjustAutoExposureCleanup(&handle);
}

TEST(ExposureHandleTest, TakesAtMostFourFrames) {
  constexpr int kSizes[][2] = {{16, 16}, {15, 4000}, {1, 200000}, {16, 200000}, {200000, 1}, {31, 31}, {1280, 720}};
  for (const auto& [width, height] : kSizes) {
    void* handle = nullptr;
    std::size_t bytes = 0;
    {
      const testing_support::MallocCount count;
      VidProcAdjustAutoExposureInit(&handle, width, height, 0);
      bytes = count.Bytes();
    }
    const std::size_t frameBytes = std::size_t{2} * static_cast<std::size_t>(width * height);
    EXPECT_LE(bytes - sizeof(AutoExposureState), 4 * frameBytes) << width << "x" << height;
    VidProcAdjustAutoExposureCleanup(&handle);
  }
}

}  // namespace
