// 4:2:0 planes that are not the set-up's, or on routes that the exported functions do not take, at every level. Those
// that fit are compared in exported_interface_test.cpp.
#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cstdint>
#include <cstdlib>
#include <utility>
#include <vector>

#include "frame/planes_420.h"
#include "reference/nv12.h"
#include "support/kernel_harness.h"

namespace {

using testing_support::Random;
using Bytes = std::vector<std::uint8_t>;

Bytes Noise(std::size_t count, Random& random) {
  Bytes bytes(count);
  random.Fill(bytes);
  return bytes;
}

class Staging : public testing_support::AtEveryLevel {
 protected:
  void TearDown() override {
    Release();
    AtEveryLevel::TearDown();
  }
  /// For equal sizes.
  void Configure(unsigned width, unsigned height) {
    Release();
    ASSERT_TRUE(VidProc420InterleavedInit(&handle, width, height, width, height));
  }

  /// With the noise table, which the library's own clean-up keeps.
  void Release() { testing_support::Processor(static_cast<VideoProcessor*>(std::exchange(handle, nullptr))); }

  void* handle = nullptr;
};

// Sizes that are not the set-up's: one column has no Cr to repeat, and looking for it would leave the buffer.
TEST_P(Staging, PlanesOfOneColumnStayAsTheyWere) {
  Configure(32, 16);
  Bytes luma(32 * 16, 90), chroma(32 * 8, 90), outLuma(4, 77), outChroma(4, 77);
  VidProc420InterleavedExecute(handle, luma.data(), chroma.data(), outLuma.data(), outChroma.data(), 32, 16, 32, 32, 1,
                               1, 4, 4, 64, 0);
  EXPECT_EQ(outLuma, Bytes(4, 77));
  EXPECT_EQ(outChroma, Bytes(4, 77));
}

TEST_P(Staging, PlanesStayAsTheyWereWhereNoKernelRuns) {
  Configure(32, 16);
  Bytes luma(32 * 16, 90), chroma(32 * 8, 90), outLuma(luma.size()), outChroma(chroma.size());
  for (const int cpuLevel : {0, -1}) {  // a frame made before is not to be taken for this one's
    static_cast<VideoProcessor*>(handle)->cpuLevel = static_cast<std::int8_t>(cpuLevel);
    std::ranges::fill(outLuma, 77);
    std::ranges::fill(outChroma, 77);
    VidProc420InterleavedExecute(handle, luma.data(), chroma.data(), outLuma.data(), outChroma.data(), 32, 16, 32, 32,
                                 32, 16, 32, 32, 64, 0);
    const std::uint8_t expected = cpuLevel == 0 ? 90 : 77;
    EXPECT_EQ(outLuma, Bytes(outLuma.size(), expected));
    EXPECT_EQ(outChroma, Bytes(outChroma.size(), expected));
  }
}

TEST_P(Staging, PlanesWhoseRowsOverlapAreRefused) {
  Configure(32, 16);
  for (int tooShort = 0; tooShort < 4; ++tooShort) {
    unsigned strides[4] = {32, 32, 32, 32};
    strides[tooShort] = 31;
    Bytes luma(32 * 16, 90), chroma(32 * 8, 90), outLuma(luma.size(), 77), outChroma(chroma.size(), 77);
    VidProc420InterleavedExecute(handle, luma.data(), chroma.data(), outLuma.data(), outChroma.data(), 32, 16,
                                 strides[0], strides[1], 32, 16, strides[2], strides[3], 64, 0);
    EXPECT_EQ(outLuma, Bytes(outLuma.size(), 77)) << tooShort;
    EXPECT_EQ(outChroma, Bytes(outChroma.size(), 77)) << tooShort;
  }
}

// Sizes that are not the set-up's: the scaler may not take the planes for frames of its own size.
TEST_P(Staging, SmallerPlanesAreNotReadPastTheirEnd) {
  Random random(5);
  Configure(256, 16);
  for (const auto& [width, height] : {std::pair{128u, 16u}, std::pair{256u, 8u}}) {
    testing_support::GuardedMemory luma(width * height, testing_support::Flush::kEnd, random);
    testing_support::GuardedMemory chroma(width * height / 2, testing_support::Flush::kEnd, random);
    luma.Load();
    chroma.Load();
    Bytes outLuma(256 * 16), outChroma(256 * 8);
    VidProc420InterleavedExecute(handle, luma.Live(), chroma.Live(), outLuma.data(), outChroma.data(), width, height,
                                 width, width, 256, 16, 256, 256, 64, 0);
    EXPECT_EQ(luma.FirstDifference(0, width) + chroma.FirstDifference(0, width), "");
  }
}

TEST_P(Staging, OddRowsOfPackedChromaHaveNoRoomForTheLastCr) {
  Random random(6);
  Configure(33, 4);
  Bytes luma(33 * 4, 90), chroma(34 * 2, 90), outLuma(33 * 4);
  testing_support::GuardedMemory outChroma(33 * 2, testing_support::Flush::kEnd, random);
  VidProc420InterleavedExecute(handle, luma.data(), chroma.data(), outLuma.data(), outChroma.Live(), 33, 4, 33, 34, 33,
                               4, 33, 33, 64, 0);
  EXPECT_EQ(Bytes(outChroma.Live(), outChroma.Live() + 33 * 2), Bytes(33 * 2, 90));
}

TEST_P(Staging, MissingPlanesAndThoseThatDoNotFitAreLeftAlone) {
  const auto run = [this](std::uint8_t* const(&planes)[4], unsigned inHeight, unsigned outHeight) {
    auto& p = *static_cast<VideoProcessor*>(handle);
    p.srcFrame = p.dstFrame = nullptr;
    p.Go(planes[0], planes[1], planes[2], planes[3], 64, inHeight, 64, 64, 64, outHeight, 64, 64, 1);
    return p.srcFrame != nullptr;
  };
  Configure(16, 16);  // scratch buffers of 12288 bytes, 64 x 96 pixels
  Bytes memory[4] = {Bytes(64 * 97), Bytes(64 * 49), Bytes(64 * 97), Bytes(64 * 49)};
  std::uint8_t* planes[4] = {memory[0].data(), memory[1].data(), memory[2].data(), memory[3].data()};
  EXPECT_TRUE(run(planes, 96, 96)) << "the pointers are stored";
  EXPECT_FALSE(run(planes, 97, 96));
  EXPECT_FALSE(run(planes, 96, 97));
  for (std::uint8_t*& missing : planes) {
    std::uint8_t* const plane = std::exchange(missing, nullptr);
    EXPECT_FALSE(run(planes, 96, 96)) << &missing - planes;
    missing = plane;
  }
  for (std::int16_t* VideoProcessor::*scratch : {&VideoProcessor::scratchA, &VideoProcessor::scratchB}) {
    std::free(std::exchange(static_cast<VideoProcessor*>(handle)->*scratch, nullptr));
    EXPECT_FALSE(run(planes, 96, 96));
    static_cast<VideoProcessor*>(handle)->SetEnhanceFilter(EnhanceLaplacian4, 0, 7, 64, 0);
    EXPECT_TRUE(run(planes, 96, 96)) << "the next set-up takes it again";
  }
}

TEST(StagedSides, HaveBounds) {
  const struct {
    unsigned width, height;
    bool canBeStaged;
  } kCases[] = {{0, 1, false},        {1, 0, false},        {1, 1, true},        {(1u << 30) - 1, 1, true},
                {1u << 30, 1, false}, {1, 1u << 30, false}, {UINT_MAX, 2, false}};
  std::uint8_t byte = 0;
  for (const auto& c : kCases) {
    EXPECT_EQ(vidproc::CanBeStaged({&byte, &byte, c.width, c.height, c.width, c.width}, UINT64_MAX), c.canBeStaged)
        << c.width << " x " << c.height;
  }
}

// The staged rows are packed; a scaler that was set up for padded ones reads them by its own stride all the same.
TEST_P(Staging, SourceStridesAreThoseOfTheSetUp) {
  Random random(7);
  const Bytes luma = Noise(256 * 16, random), chroma = Noise(256 * 8, random);
  void* padded = nullptr;
  ASSERT_EQ(PreProcInit(&padded, 256, 16, 520, 256, 16, 512, 0, 0, 0), 1);
  const testing_support::Processor p(static_cast<VideoProcessor*>(padded));
  Bytes frame(2 * 256 * 16 + 8 * 15), expected(2 * 256 * 16);
  reference::StageNv12({luma.data(), chroma.data(), 256, 256}, 256, 16, frame.data());
  p->Go(frame.data(), expected.data(), 1);
  Bytes in[2] = {luma, chroma}, out[2] = {Bytes(luma.size()), Bytes(chroma.size())};
  p->Go(in[0].data(), in[1].data(), out[0].data(), out[1].data(), 256, 16, 256, 256, 256, 16, 256, 256, 1);
  Bytes made(expected.size());
  reference::StageNv12({out[0].data(), out[1].data(), 256, 256}, 256, 16, made.data());
  for (std::size_t i = 0; i < made.size(); i += 2) ASSERT_EQ(made[i + 1], expected[i + 1]) << i;
}

RUN_AT_EVERY_LEVEL(Staging);

struct RouteCase {
  const char* name;
  bool preProcessor;
  int outWidth;
  struct {
    std::uint32_t softenLevel = 0;
    std::uint8_t adaptive = 0, use16Taps = 0, smoothing = 0, deblock = 0;
  } switches = {};
};

constexpr RouteCase kRoutes[] = {
    {"plain", true, 96},
    {"temporal", true, 160},
    {"adaptive", true, 96, {.adaptive = 2}},
    {"smoothing", true, 160, {.softenLevel = 4, .adaptive = 2, .smoothing = 1}},
    {"16 taps", true, 96, {.softenLevel = 4, .adaptive = 2, .use16Taps = 1}},
    {"post", false, 96},
    {"pass-through", false, 160},
    {"deblocked", false, 160, {.deblock = 40}},
};

testing_support::Processor MakeForRoute(const RouteCase& c) {
  testing_support::Configuration configuration{{160, 32, c.outWidth, 32}};
  configuration.softenLevel = c.switches.softenLevel;
  configuration.use16Taps = c.switches.use16Taps;
  testing_support::Processor p = testing_support::MakeProcessor(c.preProcessor, configuration);
  p->SetAdaptive(c.switches.adaptive);
  p->SetUseSpatialMotionSmoothing(c.switches.smoothing);
  p->InitDeblocker(c.switches.deblock);
  p->SetDeblockTestPattern(0);
  p->ditherLevel = 9;
  p->ditherSeed = 5;
  return p;
}

TEST(PlanesOnTheirRoute, BecomeWhatTheirFrameWould) {
  for (const RouteCase& c : kRoutes) {
    Random random(9);
    const testing_support::Processor planar = MakeForRoute(c), packed = MakeForRoute(c);
    const auto outWidth = static_cast<unsigned>(c.outWidth);
    for (int frame = 0; frame < 3; ++frame) {
      SCOPED_TRACE(testing::Message() << c.name << ", frame " << frame);
      Bytes luma = Noise(160 * 32, random), chroma = Noise(160 * 16, random);
      Bytes source(320 * 32), result(2 * outWidth * 32);
      reference::StageNv12({luma.data(), chroma.data(), 160, 160}, 160, 32, source.data());
      packed->Go(source.data(), result.data(), 0);
      Bytes expected[2] = {Bytes(outWidth * 32), Bytes(outWidth * 16)}, made[2] = {expected[0], expected[1]};
      reference::UnstageNv12(result.data(), outWidth, 32, {expected[0].data(), expected[1].data(), outWidth, outWidth});
      planar->Go(luma.data(), chroma.data(), made[0].data(), made[1].data(), 160, 32, 160, 160, outWidth, 32, outWidth,
                 outWidth, 0);
      EXPECT_EQ(made[0], expected[0]);
      EXPECT_EQ(made[1], expected[1]);
      EXPECT_EQ(planar->srcFrame, reinterpret_cast<std::uint8_t*>(planar->scratchB));
      EXPECT_EQ(planar->dstFrame, reinterpret_cast<std::uint8_t*>(planar->scratchA));
    }
  }
}

}  // namespace
