// 4:2:0 planes on their way through the processor at every level: what staging and splitting must keep.
#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cstdint>
#include <cstdlib>
#include <ostream>
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
  for (std::uint8_t& byte : bytes) byte = random.Byte();
  return bytes;
}

class Staging : public testing_support::AtEveryLevel {
 protected:
  void TearDown() override {
    VidProc420InterleavedCleanup(&handle);
    AtEveryLevel::TearDown();
  }
  void Configure(unsigned width, unsigned height, unsigned outHeight) {
    VidProc420InterleavedCleanup(&handle);
    ASSERT_TRUE(VidProc420InterleavedInit(&handle, width, height, width, outHeight));
    // Without softening and noise, equal sizes keep every sample.
    auto* const p = static_cast<VideoProcessor*>(handle);
    p->ditherLevel = 0;
    p->softenLevel = 0;
    p->SetEnhanceFilter(EnhanceLaplacian4, 0, 7, 64, 0);
  }

  void* handle = nullptr;
};

TEST_P(Staging, EqualSizesGiveThePlanesBack) {
  Random random(3);
  for (unsigned width : {2u, 6u, 14u, 16u, 30u, 32u, 34u, 64u, 66u, 130u}) {
    const unsigned height = 1 + width % 5, chromaRows = (height + 1) / 2, stride = width + 3;
    Configure(width, height, height);
    Bytes luma = Noise(stride * height, random), chroma = Noise(stride * chromaRows, random);
    Bytes outLuma(luma.size(), 77), outChroma(chroma.size(), 77);
    VidProc420InterleavedExecute(handle, luma.data(), chroma.data(), outLuma.data(), outChroma.data(), width, height,
                                 stride, stride, width, height, stride, stride, 64, 0);
    const auto expectRows = [&](Bytes plane, const Bytes& outPlane) {
      for (std::size_t i = 0; i < plane.size(); ++i) {
        if (i % stride >= width) plane[i] = 77;
      }
      EXPECT_EQ(outPlane, plane) << width << " x " << height;
    };
    expectRows(luma, outLuma);
    expectRows(chroma, outChroma);
  }
}

TEST_P(Staging, TheSecondRowOfAPairDecidesTheChroma) {
  constexpr unsigned kWidth = 24, kHeight = 8, kOutHeight = 16;
  Random random(4);
  const Bytes luma = Noise(kWidth * kHeight, random), chroma = Noise(kWidth * kHeight / 2, random);
  Bytes source;
  for (std::size_t y = 0; y < kHeight; ++y) {
    for (std::size_t x = 0; x < kWidth; ++x) {
      source.push_back(chroma[y / 2 * kWidth + x]);
      source.push_back(luma[y * kWidth + x]);
    }
  }
  Bytes scaled(2 * kWidth * kOutHeight);
  void* whole = nullptr;
  ASSERT_EQ(PreProcInit(&whole, kWidth, kHeight, 2 * kWidth, kWidth, kOutHeight, 2 * kWidth, 0, 0, 0), 1);
  PreProcExecute(whole, source.data(), scaled.data(), 0, 0, 0, 0, 0, 64, 0);
  PreProcCleanup(&whole);

  Configure(kWidth, kHeight, kOutHeight);
  Bytes planes = luma, chromaPlane = chroma;
  Bytes outLuma(kWidth * kOutHeight), outChroma(kWidth * kOutHeight / 2);
  VidProc420InterleavedExecute(handle, planes.data(), chromaPlane.data(), outLuma.data(), outChroma.data(), kWidth,
                               kHeight, kWidth, kWidth, kWidth, kOutHeight, kWidth, kWidth, 64, 0);
  int pairsThatDiffer = 0;
  for (std::size_t y = 0; y < kOutHeight; ++y) {
    for (std::size_t x = 0; x < kWidth; ++x) {
      const std::size_t at = 2 * (y * kWidth + x);
      EXPECT_EQ(outLuma[y * kWidth + x], scaled[at + 1]);
      if (y % 2 == 0) continue;
      EXPECT_EQ(outChroma[y / 2 * kWidth + x], scaled[at]);
      pairsThatDiffer += scaled[at] != scaled[at - 2 * kWidth];
    }
  }
  EXPECT_GT(pairsThatDiffer, 0);
}

// Sizes that are not the set-up's: one column has no Cr to repeat, and looking for it would leave the buffer.
TEST_P(Staging, PlanesOfOneColumnStayAsTheyWere) {
  Configure(32, 16, 16);
  Bytes luma(32 * 16, 90), chroma(32 * 8, 90), outLuma(4, 77), outChroma(4, 77);
  VidProc420InterleavedExecute(handle, luma.data(), chroma.data(), outLuma.data(), outChroma.data(), 32, 16, 32, 32, 1,
                               1, 4, 4, 64, 0);
  EXPECT_EQ(outLuma, Bytes(4, 77));
  EXPECT_EQ(outChroma, Bytes(4, 77));
}

TEST_P(Staging, PlanesStayAsTheyWereWhereNoKernelRuns) {
  Configure(32, 16, 16);
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
  Configure(32, 16, 16);
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
  Configure(256, 16, 16);
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
  Configure(33, 4, 4);
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
  Configure(16, 16, 16);  // scratch buffers of 12288 bytes, 64 x 96 pixels
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
  unsigned outWidth;
  std::uint32_t softenLevel = 0;
  std::uint8_t adaptive = 0, use16Taps = 0, smoothing = 0, deblock = 0;
};

void PrintTo(const RouteCase& c, std::ostream* out) { *out << c.name; }

class PlanesOnTheirRoute : public testing::TestWithParam<RouteCase> {
 protected:
  static testing_support::Processor Make(const RouteCase& c) {
    testing_support::Configuration configuration{{160, 32, static_cast<int>(c.outWidth), 32}};
    configuration.softenLevel = c.softenLevel;
    configuration.use16Taps = c.use16Taps;
    testing_support::Processor p = testing_support::MakeProcessor(c.preProcessor, configuration);
    p->SetAdaptive(c.adaptive);
    p->SetUseSpatialMotionSmoothing(c.smoothing);
    p->InitDeblocker(c.deblock);
    p->SetDeblockTestPattern(0);
    p->ditherLevel = 9;
    p->ditherSeed = 5;
    return p;
  }
};

TEST_P(PlanesOnTheirRoute, BecomeWhatTheirFrameWould) {
  const RouteCase& c = GetParam();
  Random random(9);
  const testing_support::Processor planar = Make(c), packed = Make(c);
  for (int frame = 0; frame < 3; ++frame) {
    Bytes luma = Noise(160 * 32, random), chroma = Noise(160 * 16, random);
    Bytes source(320 * 32), result(2 * c.outWidth * 32);
    reference::StageNv12({luma.data(), chroma.data(), 160, 160}, 160, 32, source.data());
    packed->Go(source.data(), result.data(), 0);
    Bytes expectedLuma(c.outWidth * 32), expectedChroma(c.outWidth * 16);
    reference::UnstageNv12(result.data(), c.outWidth, 32,
                           {expectedLuma.data(), expectedChroma.data(), c.outWidth, c.outWidth});
    Bytes outLuma(expectedLuma.size()), outChroma(expectedChroma.size());
    planar->Go(luma.data(), chroma.data(), outLuma.data(), outChroma.data(), 160, 32, 160, 160, c.outWidth, 32,
               c.outWidth, c.outWidth, 0);
    EXPECT_EQ(outLuma, expectedLuma) << frame;
    EXPECT_EQ(outChroma, expectedChroma) << frame;
    EXPECT_EQ(planar->srcFrame, reinterpret_cast<std::uint8_t*>(planar->scratchB));
    EXPECT_EQ(planar->dstFrame, reinterpret_cast<std::uint8_t*>(planar->scratchA));
  }
}

constexpr RouteCase kRoutes[] = {
    {"Plain", true, 96},
    {"Temporal", true, 160},
    {"Adaptive", true, 96, 0, 2},
    {"Smoothing", true, 160, 4, 2, 0, 1},
    {"SixteenTaps", true, 96, 4, 2, 1},
    {"Post", false, 96},
    {"PassThrough", false, 160},
    {"Deblocked", false, 160, 0, 0, 0, 0, 40},
};
INSTANTIATE_TEST_SUITE_P(Routes, PlanesOnTheirRoute, testing::ValuesIn(kRoutes),
                         [](const auto& c) { return c.param.name; });

}  // namespace
