// The estimate of a camera's noise, on scenes whose noise is known.
#include "noise_estimate/noise_estimator.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <string>
#include <vector>

#include "support/frame_content.h"

namespace {

using testing_support::Random;
using vidproc::NoiseEstimator;

constexpr int kWidth = 320, kHeight = 180;

/// Luma without noise, by column, row and frame.
using Scene = std::function<double(int, int, int)>;

double Texture(int x, int y) { return 50 * std::sin(x * 0.9) * std::sin(y * 0.7); }

double Still(int x, int y, int /*frame*/) { return 60 + 0.3 * x + (x > 200 ? Texture(x, y) : 0.2 * y); }

struct Case {
  const char* name;
  Scene scene;
};

const Case kScenes[] = {
    {"still", Still},
    {"moving", [](int x, int y, int frame) { return x < 190 ? 120 + Texture(x + 3 * frame, y) : 80 + 0.2 * y; }},
    {"panning", [](int x, int y, int frame) { return Still(x + 2 * frame, y, frame) / 2; }},
    {"light switched on", [](int x, int y, int frame) { return Still(x, y, frame) * (frame < 12 ? 0.8 : 1.1); }},
    {"cut", [](int x, int y, int frame) { return frame < 12 ? Still(x, y, 0) : 220 - Still(y, x, 0); }},
    {"bars", [](int x, int y, int frame) { return x < 80 || x >= 240 ? -99 : Still(x, y, frame); }},
};

/// Nearly normal numbers of deviation 1, the same everywhere.
std::vector<double> DrawNormal() {
  Random random(1);
  std::vector<double> drawn(1 << 16);
  for (double& value : drawn) {
    for (int i = 0; i < 12; ++i) value += random.Between(0, 65535) / 65535.0;
    value -= 6;
  }
  return drawn;
}

std::vector<std::uint8_t> Take(const Scene& scene, int frame, double sigma, Random& random) {
  static const std::vector<double> kNormal = DrawNormal();
  std::vector<std::uint8_t> luma;
  for (int y = 0; y < kHeight; ++y) {
    std::uint32_t next = random.Bits();
    for (int x = 0; x < kWidth; ++x) {
      const double value = scene(x, y, frame);
      const double noisy = std::round(value + sigma * kNormal[next++ % kNormal.size()]);
      luma.push_back(static_cast<std::uint8_t>(std::clamp(value < 0 ? 16.0 : noisy, 0.0, 255.0)));
    }
  }
  return luma;
}

/// Rounding to whole levels is noise too.
void ExpectNear(const NoiseEstimator& estimator, double sigma) {
  EXPECT_NEAR(estimator.Deviation(), 100 * sigma, sigma == 0 ? 40 : 12 * sigma + 10);
}

TEST(NoiseEstimator, FindsTheNoiseOfEveryScene) {
  for (const Case& c : kScenes) {
    for (const double sigma : {0.0, 1.9, 4.2, 8.8}) {
      SCOPED_TRACE(std::string(c.name) + ", noise " + std::to_string(sigma));
      NoiseEstimator estimator(kWidth, kHeight);
      Random random(3);
      for (int frame = 0; frame < 27; ++frame) {
        estimator.Measure({Take(c.scene, frame, sigma, random).data(), kWidth, 1});
        // From the third frame on, and 15 frames after light or scene have changed.
        if ((frame > 1 && frame < 12) || frame == 26) ExpectNear(estimator, sigma);
      }
    }
  }
}

TEST(NoiseEstimator, FollowsWithinFifteenFrames) {
  NoiseEstimator estimator(kWidth, kHeight);
  Random random(4);
  for (const double sigma : {2.0, 6.0, 0.0}) {
    for (int frame = 0; frame < 15; ++frame) {
      estimator.Measure({Take(Still, 0, sigma, random).data(), kWidth, 1});
    }
    ExpectNear(estimator, sigma);
  }
  estimator.Forget();
  EXPECT_EQ(estimator.Deviation(), 0);
  estimator.Measure({Take(Still, 0, 5, random).data(), kWidth, 1});
  EXPECT_NEAR(estimator.Deviation(), 500, 75) << "by the first frame alone";
}

TEST(NoiseEstimator, PassesOverRepeatedFramesButNotOverAStandstill) {
  NoiseEstimator estimator(kWidth, kHeight);
  Random random(5);
  std::vector<std::uint8_t> luma;
  for (int frame = 0; frame < 40; ++frame) {
    if (frame % 4 == 0) luma = Take(Still, 0, 3, random);
    estimator.Measure({luma.data(), kWidth, 1});
    if (frame > 4) ExpectNear(estimator, 3);
  }
  for (int frame = 0; frame < 15; ++frame) estimator.Measure({luma.data(), kWidth, 1});
  EXPECT_EQ(estimator.Deviation(), 0);
}

/// Packed and bottom-up rows give the same figure, and pictures of every size stay inside their memory.
TEST(NoiseEstimator, ReadsRowsOfEveryLayout) {
  NoiseEstimator planar(kWidth, kHeight), packed(kWidth, kHeight);
  Random random(6);
  for (int frame = 0; frame < 3; ++frame) {
    const std::vector<std::uint8_t> luma = Take(Still, frame, 4, random);
    std::vector<std::uint8_t> flippedPairs(2 * luma.size(), 77);
    for (int y = 0; y < kHeight; ++y) {
      for (int x = 0; x < kWidth; ++x) {
        flippedPairs[static_cast<std::size_t>(2 * ((kHeight - 1 - y) * kWidth + x) + 1)] =
            luma[static_cast<std::size_t>(y * kWidth + x)];
      }
    }
    planar.Measure({luma.data(), kWidth, 1});
    packed.Measure({&flippedPairs[2 * kWidth * (kHeight - 1) + 1], -2 * kWidth, 2});
    EXPECT_EQ(planar.Deviation(), packed.Deviation());
  }
  for (const auto& [width, height] : {std::pair{2, 1}, {16, 4}, {64, 15}, {64, 16}, {65, 17}, {300, 5}}) {
    NoiseEstimator estimator(width, height);
    std::vector<std::uint8_t> luma(static_cast<std::size_t>(width * height));
    for (int frame = 0; frame < 3; ++frame) {
      for (std::uint8_t& sample : luma) sample = static_cast<std::uint8_t>(100 + random.Between(0, 20));
      estimator.Measure({luma.data(), width, 1});
    }
    const int blocks = std::min(width / 16, 16) * std::min(height / 4, 16);
    EXPECT_EQ(estimator.Deviation() > 400, blocks >= 16) << width << "x" << height;
  }
}

}  // namespace
