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
#include <string>

#include "support/format_frame.h"
#include "support/kernel_harness.h"
#include "support/pipeline_settings.h"
#include "support/planes_420.h"
#include "vidproc/video_processor.h"

namespace {

using namespace testing_support;
using vidproc::FrameShape;
using vidproc::PipelineSettings;
using vidproc::PixelFormat;

constexpr int kDrawnCases = 1200;

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
  std::size_t Rest() const { return rest; }

 private:
  std::size_t rest;
};

// Lengths around those of vectors, their halves and the strips of kernels.
constexpr int kWidths[] = {2, 3, 4, 5, 7, 8, 9, 15, 16, 17, 31, 33, 47, 48, 63, 64, 65, 95, 127, 129, 191, 258};
constexpr int kHeights[] = {1, 2, 3, 5, 8, 15, 16, 17, 33};

/// From an input's length to an output's.
constexpr int (*const kLengths[])(int) = {
    [](int length) { return length; }, [](int length) { return std::max(2, (length + 1) / 2); },
    [](int length) { return length * 3 / 2 + 1; }, [](int length) { return std::max(2, length * 2 / 3); }};

struct Sizes {
  explicit Sizes(Digits& digits) : inWidth(digits.Pick(kWidths)), inHeight(digits.Pick(kHeights)) {
    const auto length = digits.Pick(kLengths);
    outWidth = length(inWidth);
    outHeight = std::max(1, length(inHeight) - (inHeight == 1 ? 1 : 0));
  }
  int inWidth, inHeight, outWidth = 0, outHeight = 0;
};

constexpr int kPaddings[] = {0, 1, 30};

void RunKernel(Digits& digits) {
  const Kernel& kernel = digits.Pick(kKernels);
  const Sizes size(digits);
  const int padding = digits.Pick(kPaddings);
  const Flush flush = digits.Next(2) == 0 ? Flush::kEnd : Flush::kBegin;
  Configuration configuration{{size.inWidth, size.inHeight, size.outWidth, size.outHeight, padding, padding}, 10};
  configuration.use16Taps = kernel.horizontalTaps == 16;
  const Processor p = MakeProcessor(kernel.family != Family::kPost, configuration);
  p->SetUseSpatialMotionSmoothing(kernel.motionGate);
  p->SetAdaptive(2);
  p->ditherLevel = 5;
  p->ditherSeed = 1;
  if (kernel.family == Family::kPost) p->InitDeblocker(padding == 0 ? 40 : 0);
  Random random(1);
  const auto bytes = [](std::uint32_t width, std::uint32_t height, std::uint32_t stride) {
    return std::size_t{height - 1} * stride + std::size_t{2} * width;
  };
  GuardedMemory source(bytes(p->inWidth, p->inHeight, p->inStride), flush, random);
  GuardedMemory destination(bytes(p->outWidth, p->outHeight, p->outStride), flush, random);
  for (int frame = 0; frame < 2; ++frame) {
    source.Load();
    p->srcFrame = source.Live();
    p->dstFrame = destination.Live();
    ((*p).*kernel.run)();
  }
}

void RunPlanes(Digits& digits) {
  const Sizes size(digits);
  const Flush flush = digits.Next(2) == 0 ? Flush::kEnd : Flush::kBegin;
  const auto side = [](int length) { return static_cast<std::size_t>(length); };
  Random random(static_cast<std::uint32_t>(digits.Next(4)));
  PlanePair in(side(size.inWidth), side(size.inHeight), flush, random);
  PlanePair out(side(size.outWidth), side(size.outHeight), flush, random);
  in.Load();
  void* handle = nullptr;
  VidProc420InterleavedInit(&handle, static_cast<unsigned>(size.inWidth), static_cast<unsigned>(size.inHeight),
                            static_cast<unsigned>(size.outWidth), static_cast<unsigned>(size.outHeight));
  const Processor processor(static_cast<VideoProcessor*>(handle));
  for (int frame = 0; frame < 2; ++frame) Execute420(handle, in, out);
}

/// What a stream of the checked interface does beside scaling.
constexpr void (*const kStages[])(PipelineSettings&) = {
    [](PipelineSettings&) {},
    [](PipelineSettings& s) { s.scaling.taps = 16, s.ditherLevel = 5, s.lumaGain = 50; },
    [](PipelineSettings& s) {
      s.scaling.filter = vidproc::ScalingFilter::kGaussian;
      s.scaling.alignment = vidproc::Alignment::kCorners;
    },
    [](PipelineSettings& s) { s.denoise.edge = 2, s.denoise.softening = 60, s.denoise.temporalStrength = 90; },
    [](PipelineSettings& s) {
      s.denoise.edge = 4, s.denoise.softening = 90, s.denoise.taps = 16, s.denoise.temporalStrength = 90;
      s.denoise.smoothsMotion = true;
    },
    [](PipelineSettings& s) { s.role = vidproc::Role::kPostProcessor, s.deblockLevel = 60; }};

void RunPipeline(Digits& digits) {
  static constexpr PixelFormat kPixelFormats[] = {PixelFormat::kUyvy, PixelFormat::kYuyv, PixelFormat::kNv12,
                                                  PixelFormat::kI420, PixelFormat::kI422};
  const Sizes size(digits);
  const auto siting = vidproc::ChromaSiting::kLeft;
  PipelineSettings settings = PlainSettings({digits.Pick(kPixelFormats), siting, size.inWidth, size.inHeight},
                                            {digits.Pick(kPixelFormats), siting, size.outWidth, size.outHeight});
  digits.Pick(kStages)(settings);
  const Placement placement{digits.Pick(kPaddings), digits.Next(2) == 1,
                            digits.Next(2) == 0 ? Flush::kEnd : Flush::kBegin};
  Random random(1);
  FormatFrame input(settings.input, placement, random), output(settings.output, placement, random);
  input.Put(Painted(settings.input, Content::kSmooth, random));
  vidproc::Pipeline pipeline(settings, nullptr);
  for (int frame = 0; frame < 2; ++frame) pipeline.Process(input.Input(), output.Output());
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
constexpr std::size_t kSizes = std::size(kWidths) * std::size(kHeights) * std::size(kLengths);
constexpr Route kRoutes[] = {
    {"kernel", RunKernel, std::size(kKernels) * kSizes* std::size(kPaddings) * 2},
    {"planes 4:2:0", RunPlanes, kSizes * 2 * 4},
    {"pipeline", RunPipeline, kSizes * 25 * std::size(kStages) * std::size(kPaddings) * 4},
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
    const std::size_t count = std::min(wanted, route.cases);
    for (std::size_t i = 0; i < count; ++i) {
      // The step has no factor in common with the counts, so that every number is met once.
      const std::size_t number = count == route.cases ? i : i * 1000003 % route.cases;
      if (asked == nullptr) {
        RunCase(route, number, forms[i % forms.size()]);
      } else {
        for (const KernelForms& each : forms) RunCase(route, number, each);
      }
    }
    if (asked != nullptr)
      std::printf("%s: %zu of %zu cases at %zu forms\n", route.name, count, route.cases, forms.size());
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
