// The auto-exposure service: the frames in which it settles or reports a drift, what it keeps from counting as one, the
// limits that blocks match within, and the life of its handle. Its counters are compared in exposure_stream_test.cpp.
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

constexpr int kNever = -1;

/// A watcher and the stream it is shown.
class Watcher {
 public:
  Watcher(int width, int height) : width(width), frame(2 * static_cast<std::size_t>(width * height), 77) {
    VidProcAdjustAutoExposureInit(&handle, width, height, 0);
  }
  ~Watcher() { VidProcAdjustAutoExposureCleanup(&handle); }
  Watcher(const Watcher&) = delete;
  Watcher& operator=(const Watcher&) = delete;

  void Fill(int level) {
    for (std::size_t i = 1; i < frame.size(); i += 2) frame[i] = static_cast<std::uint8_t>(level);
  }
  void FillBlock(int block, int level) {
    const int blocksPerRow = width / 16;
    const int start = block / blocksPerRow * 16 * width + block % blocksPerRow * 16;
    for (int i = 0; i < 256; ++i) SetSample(start + i / 16 * width + i % 16, level);
  }
  void SetSample(int index, int value) {
    frame[2 * static_cast<std::size_t>(index) + 1] = static_cast<std::uint8_t>(value);
  }
  int Show() { return VidProcAdjustAutoExposure(handle, frame.data()); }

  /// Number of the first call, of `count` calls on grey frames, that returns `result`; from 1.
  int FirstOf(int result, int level, int count) {
    Fill(level);
    int first = kNever;
    for (int call = 1; call <= count; ++call) {
      if (Show() == result && first == kNever) first = call;
    }
    return first;
  }
  void SettleAt(int level) { ASSERT_NE(FirstOf(0, level, 30), kNever); }
  const AutoExposureState& State() const { return *static_cast<const AutoExposureState*>(handle); }

 private:
  int width;
  void* handle = nullptr;
  std::vector<std::uint8_t> frame;
};

TEST(ExposureTest, SettlesOnGreyStreams) {
  struct Case {
    int level, call;
  };
  // Levels up to 9 from the initial 100 count from the first measured frame, the 22nd, on.
  for (const Case& grey : {Case{100, 29}, {91, 29}, {109, 29}, {90, 30}, {110, 30}, {128, 30}, {0, 30}, {255, 30}}) {
    SCOPED_TRACE("level " + std::to_string(grey.level));
    Watcher watcher(48, 32);
    watcher.Fill(grey.level);
    for (int call = 1; call <= 60; ++call) ASSERT_EQ(watcher.Show(), call == grey.call ? 0 : -1) << "call " << call;
    EXPECT_EQ(watcher.State().settledLevel, grey.level);
    EXPECT_EQ(watcher.State().currentLevel, grey.level);
    EXPECT_EQ(watcher.State().frameCount, 60);
  }
}

TEST(ExposureTest, SettlesOnTheMeanOfEightStableFrames) {
  Watcher watcher(48, 32);
  watcher.FirstOf(0, 100, 21);
  for (int level : {100, 101, 103, 104, 100, 101, 102}) ASSERT_EQ(watcher.FirstOf(0, level, 1), kNever);
  ASSERT_EQ(watcher.FirstOf(0, 101, 1), 1);
  EXPECT_EQ(watcher.State().settledLevel, 102) << "812 / 8 is 101.5";
  EXPECT_EQ(watcher.State().referenceFrame[1], 101) << "settling keeps the reference fresh";
}

TEST(ExposureTest, ReportsASuddenChange) {
  struct Case {
    int level, driftCall;
  };
  // Beyond 10 % the old brightness stands in for six frames, until the reference is replaced; nine more confirm a drift
  // of more than 27. Up to 10 % the new brightness counts at once, and lies too near.
  for (const Case& change : {Case{180, 15}, {156, 15}, {155, kNever}, {137, kNever}, {101, kNever}, {100, 15}}) {
    SCOPED_TRACE("128 to " + std::to_string(change.level));
    Watcher watcher(48, 32);
    watcher.SettleAt(128);
    EXPECT_EQ(watcher.FirstOf(1, change.level, 15), change.driftCall);
    const bool settlesAgain = change.driftCall != kNever;
    EXPECT_EQ(watcher.FirstOf(0, change.level, 8), settlesAgain ? 8 : kNever);
    EXPECT_EQ(watcher.State().settledLevel, settlesAgain ? change.level : 128);
    EXPECT_EQ(watcher.State().currentLevel, change.level);
    EXPECT_EQ(watcher.State().driftFrames, 0);
  }
}

TEST(ExposureTest, MovingObjectIsNoDrift) {
  struct Case {
    int objectBlocks;
    bool drifts;
  };
  // Of 20 blocks, 4 have to match.
  for (const Case& object : {Case{3, false}, {16, false}, {17, true}}) {
    SCOPED_TRACE(std::to_string(object.objectBlocks) + " blocks");
    Watcher watcher(80, 64);
    watcher.SettleAt(128);
    bool drifted = false;
    for (int frame = 0; frame < 60; ++frame) {
      watcher.Fill(128);
      for (int i = 0; i < object.objectBlocks; ++i) watcher.FillBlock((frame + i) % 20, 255);
      drifted |= watcher.Show() == 1;
      if (!object.drifts) {
        EXPECT_EQ(watcher.State().currentLevel, 128);
      }
    }
    EXPECT_EQ(drifted, object.drifts);
  }
}

TEST(ExposureTest, IncompleteBlocksCountInTheMeanOnly) {
  struct Case {
    int width, height, level;
  };
  for (const Case& size : {Case{24, 16, 66},
                           {31, 31, 26},
                           {33, 17, 91},
                           {47, 48, 68},
                           {16, 15, 0},
                           {15, 100, 0},
                           {1, 1, 0},
                           {300, 1, 0}}) {
    SCOPED_TRACE(std::to_string(size.width) + "x" + std::to_string(size.height));
    Watcher watcher(size.width, size.height);
    EXPECT_NE(watcher.FirstOf(0, 100, 60), kNever);
    EXPECT_EQ(watcher.State().settledLevel, size.level);
  }
}

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
    Watcher watcher(16, 16);
    const auto fill = [&](int Group::*level) {
      int next = 0;
      for (const Group& group : block.samples) {
        for (int i = 0; i < group.count; ++i) watcher.SetSample(next++, group.*level);
      }
    };
    fill(&Group::reference);
    for (int call = 1; call <= 22; ++call) watcher.Show();
    fill(&Group::frame);
    watcher.Show();
    const Group& first = block.samples[0];
    EXPECT_EQ(watcher.State().currentLevel, block.matches ? first.frame : first.reference);
  }
}

TEST(ExposureHandleTest, StartsFromItsInitialValues) {
  void* handle = nullptr;
  VidProcAdjustAutoExposureInit(&handle, 20, 18, -5);
  ASSERT_NE(handle, nullptr);
  const auto& state = *static_cast<AutoExposureState*>(handle);
  EXPECT_EQ(state.settling, 1);
  EXPECT_EQ(state.width, 20);
  EXPECT_EQ(state.height, 18);
  EXPECT_EQ(state.initParam, -5);
  for (std::int32_t zero : {state.frameCount, state.candidateLevel, state.currentLevel, state.stableFrames,
                            state.driftFrames, state.settledLevel, state.unusedWord, state.sceneChangeFrames}) {
    EXPECT_EQ(zero, 0);
  }
  void* const first = handle;
  VidProcAdjustAutoExposureInit(&handle, 40, 40, 0);
  EXPECT_EQ(handle, first);
  EXPECT_EQ(state.width, 20) << "a filled handle is left alone";

  std::vector<std::uint8_t> frame(20 * 18 * 2, 50);
  EXPECT_EQ(VidProcAdjustAutoExposure(handle, nullptr), -1);
  EXPECT_EQ(state.frameCount, 0);
  EXPECT_EQ(VidProcAdjustAutoExposure(handle, frame.data()), -1);
  EXPECT_EQ(state.frameCount, 1);
  EXPECT_EQ(state.candidateLevel, 100);
  EXPECT_EQ(state.currentLevel, 100);

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
