// Streams of frames through the auto-exposure service at every level against the reference: steps of brightness,
// scene changes, moving objects, noise, sizes with incomplete blocks.
#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <string>
#include <vector>

#include "exposure/auto_exposure.h"
#include "reference/exposure.h"
#include "support/kernel_harness.h"

namespace {

using namespace testing_support;

/// A camera whose picture changes in the ways that the service looks for.
class Camera {
 public:
  Camera(int width, int height, Random& random)
      : width(width), height(height), random(random), scene(static_cast<std::size_t>(width * height) * 2) {
    ChangeScene();
  }

  void NextFrame(std::uint8_t* frame) {
    if (random.OneIn(25)) ChangeScene();
    if (random.OneIn(20)) gain = random.Between(10, 45);
    if (random.OneIn(8)) drift = random.Between(-1, 1);
    gain = std::clamp(gain + drift, 0, 60);
    const int objectWidth = width / 3, at = random.Between(0, width - 1);
    for (int i = 0; i < width * height * 2; ++i) {
      const int x = i / 2 % width;
      const bool covered = moving && x >= at && x < at + objectWidth;
      const int sample = covered ? 200 : scene.data()[i] * gain / 32 + (noise > 0 ? random.Between(-noise, noise) : 0);
      frame[i] = static_cast<std::uint8_t>(std::clamp(sample, 0, 255));
    }
  }

 private:
  void ChangeScene() {
    Paint(random.Pick({Content::kSmooth, Content::kSteps, Content::kNoise}), 2 * width, height, random, scene);
    moving = random.OneIn(2);
    noise = random.Between(0, 4);
  }

  int width, height;
  Random& random;
  std::vector<std::uint8_t> scene;
  int gain = 32, drift = 0, noise = 0;
  bool moving = false;
};

TEST(ExposureStreamTest, EqualsReference) {
  constexpr int kSizes[][2] = {{64, 48}, {160, 120}, {16, 16}, {50, 37},  {33, 100},
                               {15, 40}, {40, 15},   {1, 1},   {176, 144}};
  std::set<int> results;
  std::uint32_t seed = 0;
  for (const auto& [width, height] : kSizes) {
    Random random(++seed);
    GuardedMemory frame(static_cast<std::size_t>(width * height) * 2, Flush::kEnd, random);
    Camera camera(width, height, random);
    reference::ExposureWatcher expected(width, height);
    const std::vector<vidproc::Level> levels = AvailableLevels();
    std::vector<void*> watchers(levels.size());
    for (void*& watcher : watchers) VidProcAdjustAutoExposureInit(&watcher, width, height, 0);
    for (int i = 0; i < 300; ++i) {
      camera.NextFrame(frame.Before());
      frame.Load();
      const int result = expected.Watch(frame.Before());
      results.insert(result);
      for (std::size_t l = 0; l < levels.size(); ++l) {
        vidproc::CapLevel(levels[l]);
        ASSERT_EQ(VidProcAdjustAutoExposure(watchers[l], frame.Live()), result)
            << vidproc::LevelName(levels[l]) << " seed " << seed << " frame " << i << " of " << width << "x" << height;
      }
    }
    for (void*& watcher : watchers) VidProcAdjustAutoExposureCleanup(&watcher);
  }
  vidproc::CapLevel(vidproc::BestLevel());
  EXPECT_EQ(results, (std::set<int>{-1, 0, 1})) << "the streams no longer reach every state";
}

TEST(ExposureStreamTest, BlockFiguresEqualReference) {
  constexpr int kColumns = 67, kRows = 12, kWidth = 16 * kColumns + 5, kHeight = 16 * kRows + 3, kPitch = 2 * kWidth;
  constexpr int kWarmUpFrames = 21;
  Random random(7);
  std::vector<std::uint8_t> before(std::size_t{kPitch} * kHeight), now = before;
  for (int by = 0; by < kRows; ++by) {
    for (int bx = 0; bx < kColumns; ++bx) {
      // From one value to the widest contrast, alike, opposite or unlike.
      const int spread = random.Pick({0, 1, 2, 6, 40, 255}), base = random.Between(0, 255 - spread);
      const int likeness = random.Between(0, 3), offset = random.OneIn(3) ? random.Between(-255, 255) : 0;
      for (int i = 0; i < 256; ++i) {
        const std::size_t at = static_cast<std::size_t>((16 * by + i / 16) * kPitch + 2 * (16 * bx + i % 16) + 1);
        before[at] = static_cast<std::uint8_t>(base + random.Between(0, spread));
        const int other = base + random.Between(0, spread);
        const int alike[] = {other, before[at], 255 - before[at], random.OneIn(4) ? other : before[at]};
        now[at] = static_cast<std::uint8_t>(std::clamp(alike[likeness] + offset, 0, 255));
      }
    }
  }
  for (vidproc::Level level : AvailableLevels()) {
    vidproc::CapLevel(level);
    void* watcher = nullptr;
    VidProcAdjustAutoExposureInit(&watcher, kWidth, kHeight, 0);
    for (int i = 0; i < kWarmUpFrames; ++i) VidProcAdjustAutoExposure(watcher, before.data());
    VidProcAdjustAutoExposure(watcher, now.data());
    const auto& state = *static_cast<const vidproc::AutoExposureState*>(watcher);
    for (int block = 0; block < kColumns * kRows; ++block) {
      const int by = block / kColumns, bx = block % kColumns, at = 16 * by * kPitch + 32 * bx;
      const auto expected = reference::CompareBlocks(now.data() + at, before.data() + at, kPitch);
      SCOPED_TRACE(std::string(vidproc::LevelName(level)) + ", block " + std::to_string(block));
      EXPECT_EQ(state.blockCorrelation[by][bx], expected.correlation);
      EXPECT_EQ(state.blockMeanRatio[by][bx], expected.meanRatio);
      EXPECT_EQ(state.blockFlat[by][bx], expected.isFlat);
    }
    VidProcAdjustAutoExposureCleanup(&watcher);
  }
  vidproc::CapLevel(vidproc::BestLevel());
}

}  // namespace
