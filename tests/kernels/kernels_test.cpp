// Every kernel at every available level equals the plain reference, byte for byte: small frames of all shapes, large
// frames, and streams in which kernels, settings and sizes change while history lives on.
#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <string>
#include <vector>

#include "support/kernel_harness.h"

namespace {

using namespace testing_support;

constexpr int kSmallFrameCases = 150;
constexpr int kStreamCases = 60;

int DrawOtherSize(int size, int low, int high, Random& random) {
  struct Ratio {
    int up, down;
  };
  constexpr Ratio kCommon[] = {{1, 1}, {1, 1}, {1, 2}, {2, 1}, {2, 3}, {3, 2}, {3, 4}, {4, 3}, {1, 3}, {1, 8}, {8, 1}};
  if (random.OneIn(3)) return random.Between(low, high);
  const Ratio ratio = random.Pick(kCommon);
  return std::clamp(size * ratio.up / ratio.down, low, high);
}

int DrawPadding(Random& random) { return random.OneIn(2) ? 0 : random.Pick({2, 4, 8, 16, 32, 7, 50}); }

Geometry DrawGeometry(const Kernel& kernel, Random& random) {
  Geometry g = {};
  g.inWidth = random.OneIn(4) ? random.Between(2, 9) : random.Between(2, 130);
  g.inHeight = random.OneIn(4) ? random.Between(1, 9) : random.Between(1, 70);
  g.outWidth = DrawOtherSize(g.inWidth, 2, 130, random);
  g.outHeight = DrawOtherSize(g.inHeight, 1, 70, random);
  g.inPadding = DrawPadding(random);
  g.outPadding = DrawPadding(random);
  const bool sameSize = kernel.family == Family::kTemporal || random.OneIn(4);
  if (sameSize) {
    g.outWidth = g.inWidth;
    g.outHeight = g.inHeight;
    if (kernel.family != Family::kPre) g.inPadding = 0;
  }
  return g;
}

Configuration DrawConfiguration(const Kernel& kernel, Random& random) {
  Configuration s;
  s.geometry = DrawGeometry(kernel, random);
  s.softenLevel = static_cast<std::uint32_t>(random.OneIn(2) ? 0 : random.Between(1, 12));
  s.enhanceStrength = static_cast<std::uint32_t>(random.OneIn(2) ? 0 : random.Between(1, 6));
  s.windowKind = static_cast<std::uint32_t>(random.Between(0, 2));
  s.use16Taps = kernel.horizontalTaps == 16 || random.OneIn(8);
  s.banks =
      random.Pick({BankKind::kDesigned, BankKind::kDesigned, BankKind::kModest, BankKind::kSparse, BankKind::kExtreme});
  s.bankSeed = random.Bits() % 100000;
  return s;
}

class KernelTest : public testing::TestWithParam<Kernel> {};

TEST_P(KernelTest, SmallFrames) {
  const Kernel& kernel = GetParam();
  for (std::uint32_t seed = 1; seed <= kSmallFrameCases; ++seed) {
    Random random(seed);
    Stream stream(kernel.family != Family::kPost);
    stream.Configure(DrawConfiguration(kernel, random));
    const int frames = kernel.temporal ? 3 : 1;
    for (int frame = 0; frame < frames; ++frame) {
      const std::string label = "seed " + std::to_string(seed) + " frame " + std::to_string(frame);
      if (random.OneIn(4)) stream.SwitchMotionSmoothing(0);
      ASSERT_TRUE(stream.Run(kernel, DrawFrameSettings(kernel, random), random, label));
    }
  }
}

/// Where the byte forms come to the ends of their variants.
TEST_P(KernelTest, VariantsOfTheByteForms) {
  const Kernel& kernel = GetParam();
  struct Case {
    Geometry geometry;
    std::uint32_t softenLevel;
  };
  constexpr Case kCases[] = {
      // At some level one pattern serves all luma, but not all chroma.
      {{72, 6, 64, 6}, 4},
      {{72, 6, 128, 6}, 4},
      {{36, 6, 128, 6}, 4},
      // More and more taps beside the centre that are not zero, up to 7 of 8 and 15 of 16.
      {{66, 20, 66, 20}, 24},
      {{66, 20, 44, 30}, 100},
      {{66, 20, 44, 30}, 200},
      {{66, 20, 44, 30}, 700},
  };
  if (kernel.family == Family::kTemporal) GTEST_SKIP() << "has no filters";
  for (const Case& c : kCases) {
    Stream stream(kernel.family != Family::kPost);
    Configuration configuration;
    configuration.geometry = c.geometry;
    configuration.softenLevel = c.softenLevel;
    configuration.use16Taps = kernel.horizontalTaps == 16;
    stream.Configure(configuration);
    Random random(c.softenLevel);
    FrameSettings settings;
    settings.motionSmoothing = kernel.motionGate;
    for (const Content content : {Content::kSmooth, Content::kDrift, Content::kNoise}) {
      settings.content = content;
      ASSERT_TRUE(stream.Run(kernel, settings, random, "soften " + std::to_string(c.softenLevel)));
    }
  }
}

TEST_P(KernelTest, LargeFrames) {
  const Kernel& kernel = GetParam();
  constexpr Geometry kGeometries[] = {
      {640, 360, 640, 360},    {854, 480, 640, 360, 20, 0},  {1280, 720, 640, 360, 0, 32}, {1920, 1080, 640, 360},
      {1920, 1080, 1280, 720}, {240, 135, 1920, 1080},       {33000, 3, 33000, 3},         {33000, 2, 16500, 2},
      {3, 2100, 3, 2100},      {40000, 3, 1501, 150, 0, 10}, {65535, 3, 65535, 3},         {65576, 2, 65576, 2, 0, 10},
  };
  std::uint32_t seed = 1000;
  for (const Geometry& geometry : kGeometries) {
    Random random(++seed);
    Configuration configuration = DrawConfiguration(kernel, random);
    configuration.geometry = geometry;
    configuration.banks = BankKind::kDesigned;
    if (kernel.family == Family::kTemporal) {
      configuration.geometry.outWidth = geometry.inWidth;
      configuration.geometry.outHeight = geometry.inHeight;
      configuration.geometry.inPadding = 0;
    }
    Stream stream(kernel.family != Family::kPost);
    stream.Configure(configuration);
    const int frames = kernel.temporal ? 2 : 1;
    for (int frame = 0; frame < frames; ++frame) {
      FrameSettings settings = DrawFrameSettings(kernel, random);
      if (geometry.inWidth > 32768)
        settings.ditherLevel = 12;  // the noise's pitch, or its width, needs more than 16 bits
      settings.content = frame == 0 ? Content::kSmooth : Content::kDrift;
      ASSERT_TRUE(stream.Run(kernel, settings, random, "seed " + std::to_string(seed)));
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Kernels, KernelTest, testing::ValuesIn(kKernels),
                         [](const auto& info) { return std::string(info.param.name); });

class KernelStreamTest : public testing::TestWithParam<bool> {};

/// The kernels of a role take turns on one stream: those before transmission share the history, in two layouts, and the
/// first-frame flag. The first set-up is the largest, as buffers never grow.
TEST_P(KernelStreamTest, ChangesOfKernelSettingsAndSize) {
  const bool preProcessor = GetParam();
  std::vector<Kernel> kernels;
  std::copy_if(std::begin(kKernels), std::end(kKernels), std::back_inserter(kernels),
               [=](const Kernel& kernel) { return (kernel.family != Family::kPost) == preProcessor; });
  for (std::uint32_t seed = 1; seed <= kStreamCases; ++seed) {
    Random random(seed * 7919);
    Stream stream(preProcessor);
    Configuration configuration = DrawConfiguration(kernels[0], random);
    configuration.geometry = {130, 70, 130, 70, 0, 16};
    stream.Configure(configuration);
    for (int frame = 0; frame < 12; ++frame) {
      const Kernel& kernel = kernels[random.Bits() % kernels.size()];
      if (frame > 0 && (random.OneIn(3) || kernel.family == Family::kTemporal)) {
        configuration = DrawConfiguration(kernel, random);
        stream.Configure(configuration);
      }
      FrameSettings settings = DrawFrameSettings(kernel, random);
      settings.motionSmoothing = 1;
      const std::string label = "stream seed " + std::to_string(seed) + " frame " + std::to_string(frame);
      ASSERT_TRUE(stream.Run(kernel, settings, random, label));
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Roles, KernelStreamTest, testing::Bool(),
                         [](const auto& info) { return info.param ? "PreProcessor" : "PostProcessor"; });

}  // namespace
