// Frames whose planes begin or end at pages that must not be touched: every kernel and route of both interfaces, at
// every level, formats, sizes, strides and addresses drawn from a grid that scripts/guard_pages walks whole. What is
// touched beyond a frame ends the process, which names the case first.
#include <gtest/gtest.h>

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <numeric>
#include <string>

#include "golden/streams.h"
#include "support/api_frames.h"

namespace {

using namespace testing_support;

constexpr int kDrawnCases = 1000;

char caseInWork[256];

extern "C" void NameCase(int signal) {
  std::fputs(caseInWork, stderr);
  std::signal(signal, SIG_DFL);
  std::raise(signal);
}

/// Takes the digits of a case's number, one for each question.
class Digits {
 public:
  explicit Digits(std::size_t number) : rest(number) {}
  std::size_t Next(std::size_t choices) {
    const std::size_t digit = rest % choices;
    rest /= choices;
    return digit;
  }
  template <typename Value, std::size_t kCount>
  const Value& Pick(const Value (&choices)[kCount]) {
    return choices[Next(kCount)];
  }

 private:
  std::size_t rest;
};

struct Size {
  int width, height;
};

// Lengths around those of vectors, their halves and the strips of kernels.
constexpr int kWidths[] = {2, 3, 4, 5, 7, 8, 9, 15, 16, 17, 31, 33, 47, 48, 63, 64, 65, 95, 127, 129, 191, 258};
constexpr int kHeights[] = {1, 2, 3, 5, 8, 15, 16, 17, 33};
constexpr std::size_t kSmallSizes = std::size(kWidths) * std::size(kHeights);
constexpr Size kLargeSizes[] = {{1279, 17}, {1920, 1080}};
constexpr std::size_t kSizes = kSmallSizes + std::size(kLargeSizes);

/// From an input's length to an output's.
constexpr int (*const kLengths[])(int) = {
    [](int length) { return length; }, [](int length) { return std::max(2, (length + 1) / 2); },
    [](int length) { return length * 3 / 2 + 1; }, [](int length) { return std::max(2, length * 2 / 3); }};

/// The last guards every row.
constexpr int kPaddings[] = {0, 1, 30, golden::kWholePages};

Size DrawSize(Digits& digits) {
  const std::size_t size = digits.Next(kSizes);
  if (size >= kSmallSizes) return kLargeSizes[size - kSmallSizes];
  return {kWidths[size % std::size(kWidths)], kHeights[size / std::size(kWidths)]};
}

/// kLengths makes widths, at least 2; a height of 1 may stay 1.
Geometry DrawGeometry(Digits& digits) {
  const auto [width, height] = DrawSize(digits);
  const auto length = digits.Pick(kLengths);
  const int padding = digits.Pick(kPaddings);
  return {width, height, length(width), std::max(1, length(height) - (height == 1 ? 1 : 0)), padding, padding};
}

/// For the object, whose padding is in bytes.
Geometry WithPages(Geometry g, int pixelBytes) {
  const auto padding = [&](int width) {
    const int rowBytes = width * pixelBytes;
    return static_cast<int>(StrideOfPages(static_cast<std::size_t>(rowBytes))) - rowBytes;
  };
  if (g.inPadding != golden::kWholePages) return g;
  g.inPadding = padding(g.inWidth);
  g.outPadding = padding(g.outWidth);
  return g;
}

Flush DrawFlush(Digits& digits) { return digits.Next(2) == 0 ? Flush::kEnd : Flush::kBegin; }

void RunTwoFrames(golden::Stream stream) {
  for (int n = 0; n < 2; ++n) {
    stream.Paint(n);
    stream.Process();
    stream.in.Store();
    stream.out.Store();
  }
}

golden::Settings SettingsFor(const Geometry& g) {
  const auto deblock = static_cast<std::uint8_t>(g.inPadding == 0 ? 40 : 0);
  return {.softening = 10, .dither = 5, .adaptive = 2, .temporalStrength = 80, .temporalShift = 3, .deblock = deblock};
}

void RunKernel(Digits& digits) {
  const Kernel& kernel = digits.Pick(kKernels);
  Geometry g = DrawGeometry(digits);
  // The temporal filter takes its source as packed, whatever the stride.
  if (kernel.family == Family::kTemporal) g.inPadding = g.outPadding = 0;
  g = WithPages(g, 2);
  RunTwoFrames(golden::StartKernel(kernel, g, SettingsFor(g), DrawFlush(digits)));
}

constexpr golden::Use kUses[] = {golden::Use::kPre, golden::Use::kPre16Taps, golden::Use::kPreMotionSmoothing,
                                 golden::Use::kPost};

void RunExported(Digits& digits) {
  const golden::Use use = digits.Pick(kUses);
  const Geometry g = WithPages(DrawGeometry(digits), 2);
  RunTwoFrames(golden::StartExported(use, g, SettingsFor(g), DrawFlush(digits)));
}

void RunPlanes(Digits& digits) {
  const Geometry g = WithPages(DrawGeometry(digits), 1);
  RunTwoFrames(golden::StartPlanes(g, DrawFlush(digits)));
}

/// What a stream of the checked interface does beside scaling.
constexpr void (*const kStages[])(vidproc::PreOptions&) = {
    [](vidproc::PreOptions&) {}, [](vidproc::PreOptions& o) { o.taps = 16, o.dither_level = 5, o.luma_gain = 50; },
    [](vidproc::PreOptions& o) { o.filter = VIDPROC_FILTER_GAUSSIAN, o.alignment = VIDPROC_ALIGNMENT_CORNERS; },
    [](vidproc::PreOptions& o) { o.denoise_edge = 2, o.denoise_softening = 60, o.temporal_strength = 90; },
    [](vidproc::PreOptions& o) {
      o.denoise_edge = 4, o.denoise_softening = 90, o.denoise_taps = 16, o.temporal_strength = 90;
      o.motion_smoothing = 1;
    }};

void RunPipeline(Digits& digits) {
  const vidproc_format from = digits.Pick(kFormats), to = digits.Pick(kFormats);
  const std::size_t stage = digits.Next(std::size(kStages) + 1);
  const Geometry g = DrawGeometry(digits);
  const Flush flush = DrawFlush(digits);
  const golden::Placement placement{g.inPadding, digits.Next(2) == 1, flush};
  const auto start = [&](auto options, auto spoil) {
    options.input.format = from;
    options.output.format = to;
    spoil(options);
    RunTwoFrames(golden::StartChecked(options, placement));
  };
  if (stage < std::size(kStages)) {
    start(WithSizes<vidproc::PreOptions>(g.inWidth, g.inHeight, g.outWidth, g.outHeight), kStages[stage]);
  } else {
    start(WithSizes<vidproc::PostOptions>(g.inWidth, g.inHeight, g.outWidth, g.outHeight),
          [](vidproc::PostOptions& o) { o.deblock_level = 60; });
  }
}

/// The least that an exposure watcher takes.
constexpr int kWatchedSide = 16;

void RunExposure(Digits& digits) {
  const vidproc_format format = digits.Pick(kFormats);
  const auto [width, height] = DrawSize(digits);
  const int padding = digits.Pick(kPaddings);
  vidproc::ExposureOptions options;
  options.input = {format, std::max(width, kWatchedSide), std::max(height, kWatchedSide), VIDPROC_SITING_LEFT};
  RunTwoFrames(golden::StartChecked(options, {padding, digits.Next(2) == 1, DrawFlush(digits)}));
}

/// For the harness's own test.
void ReadOneByteTooMany(Digits& digits) {
  const bool isBefore = digits.Next(2) == 0;
  Random random(1);
  GuardedMemory frame(100, isBefore ? Flush::kBegin : Flush::kEnd, random);
  const volatile std::uint8_t* const beyond = isBefore ? frame.Live() - 1 : frame.Live() + 100;
  static_cast<void>(*beyond);
}

struct Route {
  const char* name;
  void (*run)(Digits&);
  std::size_t cases;
};
constexpr std::size_t kPlaces = kSizes * std::size(kPaddings) * 2, kScalings = kPlaces * std::size(kLengths);
constexpr Route kRoutes[] = {
    {"kernel", RunKernel, std::size(kKernels) * kScalings},
    {"exported", RunExported, std::size(kUses) * kScalings},
    {"planes 4:2:0", RunPlanes, kScalings},
    {"pipeline", RunPipeline, std::size(kFormats) * std::size(kFormats) * (std::size(kStages) + 1) * kScalings * 2},
    {"exposure", RunExposure, std::size(kFormats) * kPlaces * 2},
};

void RunCase(const Route& route, std::size_t number, const KernelForms& forms) {
  std::snprintf(caseInWork, sizeof(caseInWork), "guard pages: %s case %zu at %s\n", route.name, number,
                forms.Name().c_str());
  const FormsInUse inUse(forms);
  Digits digits(number);
  route.run(digits);
}

class GuardPages : public testing::Test {
 protected:
  void SetUp() override { previous = std::signal(SIGSEGV, NameCase); }
  void TearDown() override { std::signal(SIGSEGV, previous); }

 private:
  void (*previous)(int) = nullptr;
};

TEST_F(GuardPages, NothingBeyondAFrameIsTouched) {
  // A number of cases for each route, spread over all: for scripts/guard_pages.
  const char* const asked = std::getenv("VIDPROC_GUARD_CASES");
  const std::size_t wanted = asked != nullptr ? std::strtoul(asked, nullptr, 10) : kDrawnCases;
  const std::vector<KernelForms> forms = AvailableForms();
  for (const Route& route : kRoutes) {
    const std::size_t all = route.cases * forms.size();
    const std::size_t count = asked != nullptr ? std::min(wanted, route.cases) * forms.size() : kDrawnCases;
    // Steps of about the golden section spread evenly; without a common factor they meet every number once.
    std::size_t step = all / 1000 * 618;
    while (std::gcd(step, all) != 1) ++step;
    for (std::size_t i = 0, number = 0; i < count; ++i, number = (number + step) % all) {
      RunCase(route, number % route.cases, forms[number / route.cases]);
    }
    if (asked != nullptr) std::printf("%s: %zu of %zu cases at %zu forms\n", route.name, count, all, forms.size());
  }
}

TEST_F(GuardPages, OneByteTooManyIsCaught) {
  testing::FLAGS_gtest_death_test_style = "fast";
  const Route planted = {"planted", ReadOneByteTooMany, 2};
  for (const std::size_t number : {std::size_t{0}, std::size_t{1}}) {
    EXPECT_DEATH(RunCase(planted, number, AvailableForms().front()), "planted case");
  }
}

}  // namespace
