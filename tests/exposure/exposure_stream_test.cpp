// Streams of frames through the auto-exposure service at every level against the reference, result and counters: steps
// of brightness, scene changes, moving objects, noise, sizes with incomplete blocks.
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
using Bytes = std::vector<std::uint8_t>;

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

reference::ExposureState StateOf(const void* watcher) {
  const auto& s = *static_cast<const vidproc::AutoExposureState*>(watcher);
  return {s.frameCount,   s.settling,     s.candidateLevel, s.currentLevel,
          s.settledLevel, s.stableFrames, s.driftFrames,    s.sceneChangeFrames};
}

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
        const int actual = VidProcAdjustAutoExposure(watchers[l], frame.Live());
        ASSERT_TRUE(actual == result && StateOf(watchers[l]) == expected.State())
            << vidproc::LevelName(levels[l]) << " seed " << seed << " frame " << i << " of " << width << "x" << height;
      }
    }
    for (void*& watcher : watchers) VidProcAdjustAutoExposureCleanup(&watcher);
  }
  vidproc::CapLevel(vidproc::BestLevel());
  EXPECT_EQ(results, (std::set<int>{-1, 0, 1})) << "the streams no longer reach every state";
}

TEST(ExposureStreamTest, GreyStepsAtTheTolerancesEqualReference) {
  for (const int step : {-28, -27, 9, 10, 27, 28}) {
    reference::ExposureWatcher expected(48, 32);
    void* watcher = nullptr;
    VidProcAdjustAutoExposureInit(&watcher, 48, 32, 0);
    for (int i = 0; i < 80; ++i) {
      Bytes frame(2 * 48 * 32, static_cast<std::uint8_t>(i < 40 ? 128 : 128 + step));
      ASSERT_EQ(VidProcAdjustAutoExposure(watcher, frame.data()), expected.Watch(frame.data())) << step << ", " << i;
      ASSERT_TRUE(StateOf(watcher) == expected.State()) << step << ", frame " << i;
    }
    VidProcAdjustAutoExposureCleanup(&watcher);
  }
}

/// A frame and a later one, block by block: of one value to the widest contrast; alike, opposite or unlike.
void DrawBlocks(int columns, int rows, int pitch, Random& random, Bytes& before, Bytes& now) {
  for (int block = 0; block < columns * rows; ++block) {
    const int spread = random.Pick({0, 1, 2, 6, 40, 255}), base = random.Between(0, 255 - spread);
    const int texture = random.Between(0, 3), likeness = random.Between(0, 3);
    const int offset = random.OneIn(6) ? -255 : random.OneIn(4) ? random.Between(-255, 255) : 0;
    for (int i = 0; i < 256; ++i) {
      const int textures[] = {random.Between(0, spread), random.Between(0, spread), (i + i / 16) % 2 * spread,
                              i == 17 ? spread : 0};
      const int value = base + textures[texture], other = base + random.Between(0, spread);
      const int alike[] = {other, value, 255 - value, random.OneIn(4) ? other : value};
      const int row = 16 * (block / columns) + i / 16, column = 16 * (block % columns) + i % 16;
      const auto at = static_cast<std::size_t>(row * pitch + 2 * column + 1);
      before[at] = static_cast<std::uint8_t>(value);
      now[at] = static_cast<std::uint8_t>(std::clamp(alike[likeness] + offset, 0, 255));
    }
  }
}

TEST(ExposureStreamTest, BlockFiguresEqualReference) {
  constexpr int kRows = 12, kWarmUpFrames = 21;
  Random random(7);
  for (const int columns : {1, 2, 67}) {  // one stands alone, 67 are more than a kernel sums up at once
    const int width = 16 * columns + 5, height = 16 * kRows + 3, pitch = 2 * width;
    Bytes before(static_cast<std::size_t>(pitch * height)), now = before;
    DrawBlocks(columns, kRows, pitch, random, before, now);
    for (vidproc::Level level : AvailableLevels()) {
      vidproc::CapLevel(level);
      void* watcher = nullptr;
      VidProcAdjustAutoExposureInit(&watcher, width, height, 0);
      for (int i = 0; i < kWarmUpFrames; ++i) VidProcAdjustAutoExposure(watcher, before.data());
      VidProcAdjustAutoExposure(watcher, now.data());
      const auto& state = *static_cast<const vidproc::AutoExposureState*>(watcher);
      for (int block = 0; block < columns * kRows; ++block) {
        const int by = block / columns, bx = block % columns, at = 16 * by * pitch + 32 * bx;
        const auto expected = reference::CompareBlocks(now.data() + at, before.data() + at, pitch);
        SCOPED_TRACE(std::string(vidproc::LevelName(level)) + ", block " + std::to_string(block));
        EXPECT_EQ(state.blockCorrelation[by][bx], expected.correlation);
        EXPECT_EQ(state.blockMeanRatio[by][bx], expected.meanRatio);
        EXPECT_EQ(state.blockFlat[by][bx], expected.isFlat);
      }
      VidProcAdjustAutoExposureCleanup(&watcher);
    }
  }
  vidproc::CapLevel(vidproc::BestLevel());
}

}  // namespace
