// Frame dispatch: which kernel each role, geometry, switch and processor level selects, told by the frame that it
// makes.
#include <gtest/gtest.h>

#include <algorithm>
#include <ostream>
#include <string>
#include <vector>

#include "support/kernel_harness.h"
#include "vidproc/video_processor.h"

namespace {

using Bytes = std::vector<unsigned char>;
using RunKernel = int (VideoProcessor::*)();
constexpr RunKernel kNone = nullptr, kPlain = &VideoProcessor::PreProcExecute, kPost = &VideoProcessor::PostProcExecute,
                    kTemporal = &VideoProcessor::PreProcTemporalExecute,
                    kAdaptive = &VideoProcessor::PreProcAdaptiveExecute,
                    kSmoothing = &VideoProcessor::PreProcAdaptiveMotionSmoothingExecute,
                    k16Tap = &VideoProcessor::PreProcAdaptive16TapTemporalExecute;

struct Case {
  const char* name;
  RunKernel kernel;
  std::int8_t cpuLevel = 1;
  bool preProcessor = true;
  unsigned char plainScaler = 0;
  bool equalSizes = false;
  std::uint32_t softenLevel = 0;
  unsigned char adaptive = 0, use16Taps = 0, smoothing = 0;
};

void PrintTo(const Case& c, std::ostream* out) { *out << c.name; }

constexpr int kWidth = 64;
constexpr int kHeight = 32;

class Dispatch : public testing::TestWithParam<Case> {
 protected:
  Dispatch() {
    testing_support::Random random(2);
    for (unsigned char& byte : source) byte = random.Byte();
  }

  static testing_support::Processor MakeProcessor(const Case& c) {
    const int divisor = c.equalSizes ? 1 : 2;
    testing_support::Configuration configuration{{kWidth, kHeight, kWidth / divisor, kHeight / divisor}};
    configuration.softenLevel = c.softenLevel;
    configuration.use16Taps = c.use16Taps;
    testing_support::Processor p = testing_support::MakeProcessor(c.preProcessor, configuration);
    p->SetUseSpatialMotionSmoothing(c.smoothing);
    p->SetAdaptive(c.adaptive);
    p->cpuLevel = c.cpuLevel;
    return p;
  }

  Bytes source = Bytes(std::size_t{2} * kWidth * kHeight);
  Bytes destination = Bytes(source.size());
};

TEST_P(Dispatch, RunsOneKernel) {
  const Case& c = GetParam();
  const testing_support::Processor dispatched = MakeProcessor(c), direct = MakeProcessor(c);
  Bytes expected = destination;
  direct->srcFrame = source.data();
  direct->dstFrame = expected.data();
  for (int frame = 0; frame < 2; ++frame) {  // history tells some kernels apart
    EXPECT_EQ(dispatched->Go(source.data(), destination.data(), c.plainScaler), 0);
    if (c.kernel != kNone) ((*direct).*c.kernel)();
    EXPECT_EQ(destination, expected);
    std::rotate(source.begin(), source.begin() + 2, source.end());
  }
  EXPECT_EQ(dispatched->temporalFirstFrame, direct->temporalFirstFrame);
}

constexpr Case kCases[] = {
    {"Scales", kPlain},
    {"ScalesAtLevel0", kPlain, 0},
    {"DoesNothingBelowLevel0", kNone, -1},
    {"ForcedPlain", kPlain, 1, true, 1, true, 0, 1, 1, 1},
    {"ForcedPlainOutranksTheRole", kPlain, 0, false, 9},
    {"ForcedPlainNeedsLevel0", kNone, -1, true, 1},
    {"PostProcessor", kPost, 0, false, 0, false, 0, 1, 1, 1},
    {"PostProcessorNeedsLevel0", kNone, -1, false},
    {"EqualSizesOutrankTheSwitches", kTemporal, 1, true, 0, true, 0, 3, 1, 1},
    {"EqualSizesNeedLevel1", kNone, 0, true, 0, true, 0, 3},
    {"EqualSizesSoftened", kPlain, 1, true, 0, true, 1},
    {"EqualSizesSoftenedAdaptive", kAdaptive, 1, true, 0, true, 1, 1},
    {"Adaptive", kAdaptive, 1, true, 0, false, 0, 8},
    {"AdaptiveNeedsLevel1", kPlain, 0, true, 0, false, 0, 8, 1, 1},
    {"Smoothing", kSmoothing, 1, true, 0, false, 0, 1, 0, 1},
    {"SmoothingAloneScales", kPlain, 1, true, 0, false, 0, 0, 0, 1},
    {"SixteenTapsOutrankSmoothing", k16Tap, 1, true, 0, false, 0, 1, 2, 1},
    {"SixteenTapsAloneScale", kPlain, 1, true, 0, false, 0, 0, 1},
};
INSTANTIATE_TEST_SUITE_P(Routes, Dispatch, testing::ValuesIn(kCases), [](const auto& c) { return c.param.name; });

using FileForms = Dispatch;

TEST_P(FileForms, ProcessTheFramesThatThePointersLastHeld) {
  const testing_support::Processor p = MakeProcessor(GetParam());
  p->Go(source.data(), destination.data(), 0);
  const Bytes expected = destination;
  char in[] = "in.yuv";
  char out[] = "out.yuv";

  destination.assign(destination.size(), 0);
  EXPECT_EQ(p->Go(in, out), 0);
  EXPECT_EQ(destination, expected);
  EXPECT_STREQ(p->inFileName, in);
  EXPECT_STREQ(p->outFileName, out);

  destination.assign(destination.size(), 0);
  EXPECT_EQ(p->Go(out, in, 2, 3, 4, 5, 6), 0);
  EXPECT_EQ(destination, expected) << "the flags wait for the next set-up";
  EXPECT_STREQ(p->inFileName, out);
  EXPECT_EQ(p->optionFlag0, 2);
  EXPECT_EQ(p->optionFlag1, 3);
  EXPECT_EQ(p->enhanceHorizontal, 4);
  EXPECT_EQ(p->enhanceVertical, 5);
  EXPECT_EQ(p->optionValue, 6u);
}

INSTANTIATE_TEST_SUITE_P(Routes, FileForms, testing::Values(Case{"Scales", kPlain}));

}  // namespace
