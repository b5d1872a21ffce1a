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

struct Switches {
  std::int8_t cpuLevel = 1;
  bool preProcessor = true;
  unsigned char plainScaler = 0;
  bool equalSizes = false;
  std::uint32_t softenLevel = 0;
  unsigned char adaptive = 0, use16Taps = 0, smoothing = 0;
};

struct Case {
  const char* name;
  RunKernel kernel;
  Switches switches = {};
};

void PrintTo(const Case& c, std::ostream* out) { *out << c.name; }

constexpr int kWidth = 64;
constexpr int kHeight = 32;

class Dispatch : public testing::Test {
 protected:
  Dispatch() {
    testing_support::Random random(2);
    random.Fill(source);
  }

  static testing_support::Processor MakeProcessor(const Switches& switches) {
    const int divisor = switches.equalSizes ? 1 : 2;
    testing_support::Configuration configuration{{kWidth, kHeight, kWidth / divisor, kHeight / divisor}};
    configuration.softenLevel = switches.softenLevel;
    configuration.use16Taps = switches.use16Taps;
    testing_support::Processor p = testing_support::MakeProcessor(switches.preProcessor, configuration);
    p->SetUseSpatialMotionSmoothing(switches.smoothing);
    p->SetAdaptive(switches.adaptive);
    p->cpuLevel = switches.cpuLevel;
    return p;
  }

  Bytes source = Bytes(std::size_t{2} * kWidth * kHeight);
  Bytes destination = Bytes(source.size());
};

class Route : public Dispatch, public testing::WithParamInterface<Case> {};

TEST_P(Route, RunsOneKernel) {
  const Case& c = GetParam();
  const testing_support::Processor dispatched = MakeProcessor(c.switches), direct = MakeProcessor(c.switches);
  Bytes expected = destination;
  direct->srcFrame = source.data();
  direct->dstFrame = expected.data();
  for (int frame = 0; frame < 2; ++frame) {  // history tells some kernels apart
    EXPECT_EQ(dispatched->Go(source.data(), destination.data(), c.switches.plainScaler), 0);
    if (c.kernel != kNone) ((*direct).*c.kernel)();
    EXPECT_EQ(destination, expected);
    std::rotate(source.begin(), source.begin() + 2, source.end());
  }
  EXPECT_EQ(dispatched->temporalFirstFrame, direct->temporalFirstFrame);
}

constexpr Case kCases[] = {
    {"Scales", kPlain},
    {"ScalesAtLevel0", kPlain, {.cpuLevel = 0}},
    {"DoesNothingBelowLevel0", kNone, {.cpuLevel = -1}},
    {"ForcedPlain", kPlain, {.plainScaler = 1, .equalSizes = true, .adaptive = 1, .use16Taps = 1, .smoothing = 1}},
    {"ForcedPlainOutranksTheRole", kPlain, {.cpuLevel = 0, .preProcessor = false, .plainScaler = 9}},
    {"ForcedPlainNeedsLevel0", kNone, {.cpuLevel = -1, .plainScaler = 1}},
    {"PostProcessor", kPost, {.cpuLevel = 0, .preProcessor = false, .adaptive = 1, .use16Taps = 1, .smoothing = 1}},
    {"PostProcessorNeedsLevel0", kNone, {.cpuLevel = -1, .preProcessor = false}},
    {"EqualSizesOutrankTheSwitches", kTemporal, {.equalSizes = true, .adaptive = 3, .use16Taps = 1, .smoothing = 1}},
    {"EqualSizesNeedLevel1", kNone, {.cpuLevel = 0, .equalSizes = true, .adaptive = 3}},
    {"EqualSizesSoftened", kPlain, {.equalSizes = true, .softenLevel = 1}},
    {"EqualSizesSoftenedAdaptive", kAdaptive, {.equalSizes = true, .softenLevel = 1, .adaptive = 1}},
    {"Adaptive", kAdaptive, {.adaptive = 8}},
    {"AdaptiveNeedsLevel1", kPlain, {.cpuLevel = 0, .adaptive = 8, .use16Taps = 1, .smoothing = 1}},
    {"Smoothing", kSmoothing, {.adaptive = 1, .smoothing = 1}},
    {"SmoothingAloneScales", kPlain, {.smoothing = 1}},
    {"SixteenTapsOutrankSmoothing", k16Tap, {.adaptive = 1, .use16Taps = 2, .smoothing = 1}},
    {"SixteenTapsAloneScale", kPlain, {.use16Taps = 1}},
};
INSTANTIATE_TEST_SUITE_P(Dispatch, Route, testing::ValuesIn(kCases), [](const auto& c) { return c.param.name; });

TEST_F(Dispatch, FileFormsProcessTheFramesThatThePointersLastHeld) {
  const testing_support::Processor p = MakeProcessor({});
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

}  // namespace
