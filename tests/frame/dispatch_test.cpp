// Frame dispatch: which kernel each role, geometry, switch and processor level selects, told by the traces it leaves.
#include <gtest/gtest.h>

#include <algorithm>
#include <ostream>
#include <string>
#include <vector>

#include "support/kernel_harness.h"
#include "vidproc/video_processor.h"

namespace {

enum class Route { kNone, kPlain, kPost, kTemporal, kAdaptive, kSmoothing, k16Tap, kUnclear };

struct Case {
  const char* name;
  Route route;
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
  std::vector<unsigned char> source = std::vector<unsigned char>(std::size_t{2} * kWidth * kHeight, 100);
  std::vector<unsigned char> destination = std::vector<unsigned char>(std::size_t{2} * kWidth * kHeight, 0xCD);

  testing_support::Processor MakeProcessor(const Case& c) {
    const int divisor = c.equalSizes ? 1 : 2;
    testing_support::Configuration configuration{{kWidth, kHeight, kWidth / divisor, kHeight / divisor}};
    configuration.softenLevel = c.softenLevel;
    configuration.use16Taps = c.use16Taps;
    testing_support::Processor p = testing_support::MakeProcessor(c.preProcessor, configuration);
    p->SetUseSpatialMotionSmoothing(c.smoothing);
    p->SetAdaptive(c.adaptive);
    p->cpuLevel = c.cpuLevel;
    p->PrintFilters(1);
    return p;
  }

  Route RouteTaken(const VideoProcessor& p, const std::string& listing) const {
    const bool wrote = std::any_of(destination.begin(), destination.end(), [](int byte) { return byte != 0xCD; });
    const bool blended = p.temporalFirstFrame == 0;
    if (!wrote) return listing.empty() && !blended ? Route::kNone : Route::kUnclear;
    if (listing.empty()) return blended ? Route::kTemporal : Route::kUnclear;
    if (listing.starts_with("PreProc 16 tap")) return blended ? Route::k16Tap : Route::kUnclear;
    if (listing.starts_with("Horizontal")) return blended ? Route::kUnclear : Route::kPost;
    if (!blended) return Route::kPlain;
    return p.smoothingBufferSmall != nullptr && p.smoothingBufferSmall[0] != 0 ? Route::kSmoothing : Route::kAdaptive;
  }
};

TEST_P(Dispatch, RunsOneKernel) {
  const testing_support::Processor p = MakeProcessor(GetParam());
  testing::internal::CaptureStdout();
  EXPECT_EQ(p->Go(source.data(), destination.data(), GetParam().plainScaler), 0);
  EXPECT_EQ(RouteTaken(*p, testing::internal::GetCapturedStdout()), GetParam().route);
}

constexpr Case kCases[] = {
    {"Scales", Route::kPlain},
    {"ScalesAtLevel0", Route::kPlain, 0},
    {"DoesNothingBelowLevel0", Route::kNone, -1},
    {"ForcedPlain", Route::kPlain, 1, true, 1, true, 0, 1, 1, 1},
    {"ForcedPlainOutranksTheRole", Route::kPlain, 0, false, 9},
    {"ForcedPlainNeedsLevel0", Route::kNone, -1, true, 1},
    {"PostProcessor", Route::kPost, 0, false, 0, false, 0, 1, 1, 1},
    {"PostProcessorNeedsLevel0", Route::kNone, -1, false},
    {"EqualSizesOutrankTheSwitches", Route::kTemporal, 1, true, 0, true, 0, 3, 1, 1},
    {"EqualSizesNeedLevel1", Route::kNone, 0, true, 0, true, 0, 3},
    {"EqualSizesSoftened", Route::kPlain, 1, true, 0, true, 1},
    {"EqualSizesSoftenedAdaptive", Route::kAdaptive, 1, true, 0, true, 1, 1},
    {"Adaptive", Route::kAdaptive, 1, true, 0, false, 0, 8},
    {"AdaptiveNeedsLevel1", Route::kPlain, 0, true, 0, false, 0, 8, 1, 1},
    {"AdaptiveNeedsLevel0", Route::kNone, -1, true, 0, false, 0, 8, 1, 1},
    {"Smoothing", Route::kSmoothing, 1, true, 0, false, 0, 1, 0, 1},
    {"SmoothingAloneScales", Route::kPlain, 1, true, 0, false, 0, 0, 0, 1},
    {"SixteenTapsOutrankSmoothing", Route::k16Tap, 1, true, 0, false, 0, 1, 2, 1},
    {"SixteenTapsAloneScale", Route::kPlain, 1, true, 0, false, 0, 0, 1},
};
INSTANTIATE_TEST_SUITE_P(Routes, Dispatch, testing::ValuesIn(kCases), [](const auto& c) { return c.param.name; });

using FileForms = Dispatch;

TEST_P(FileForms, ProcessTheFramesThatThePointersLastHeld) {
  const testing_support::Processor p = MakeProcessor(GetParam());
  p->PrintFilters(0);
  p->Go(source.data(), destination.data(), 0);
  const std::vector<unsigned char> expected = destination;
  char in[] = "in.yuv";
  char out[] = "out.yuv";

  destination.assign(destination.size(), 0xCD);
  EXPECT_EQ(p->Go(in, out), 0);
  EXPECT_EQ(destination, expected);
  EXPECT_STREQ(p->inFileName, in);
  EXPECT_STREQ(p->outFileName, out);

  destination.assign(destination.size(), 0xCD);
  EXPECT_EQ(p->Go(out, in, 2, 3, 4, 5, 6), 0);
  EXPECT_EQ(destination, expected) << "the flags wait for the next set-up";
  EXPECT_STREQ(p->inFileName, out);
  EXPECT_EQ(p->optionFlag0, 2);
  EXPECT_EQ(p->optionFlag1, 3);
  EXPECT_EQ(p->enhanceHorizontal, 4);
  EXPECT_EQ(p->enhanceVertical, 5);
  EXPECT_EQ(p->optionValue, 6u);
}

INSTANTIATE_TEST_SUITE_P(Routes, FileForms, testing::Values(Case{"Scales", Route::kPlain}));

}  // namespace
