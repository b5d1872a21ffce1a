// Streams of frames through the auto-exposure service at every level against the reference: steps of brightness,
// scene changes, moving objects, noise, sizes with incomplete blocks.
#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <vector>

#include "kernel_harness.h"
#include "reference/exposure.h"

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

}  // namespace
