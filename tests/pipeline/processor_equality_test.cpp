// What the checked interface shares with the processor object, byte for byte: denoising at equal sizes, deblocking, and
// scaling by kernels of a given width, counted from the corner.
#include <gtest/gtest.h>

#include <initializer_list>
#include <utility>

#include "golden/streams.h"
#include "support/api_frames.h"

namespace {

using namespace testing_support;
using golden::Settings;

constexpr const Kernel& kPlain = KernelThatRuns(&VideoProcessor::PreProcExecute);
constexpr const Kernel& kSixteenTaps = KernelThatRuns(&VideoProcessor::PreProcAdaptive16TapExecute);
constexpr const Kernel& kDenoising = KernelThatRuns(&VideoProcessor::PreProcAdaptiveExecute);
constexpr const Kernel& kSmoothing = KernelThatRuns(&VideoProcessor::PreProcAdaptiveMotionSmoothingExecute);
constexpr const Kernel& kSixteenTapDenoising = KernelThatRuns(&VideoProcessor::PreProcAdaptive16TapTemporalExecute);
constexpr const Kernel& kPost = KernelThatRuns(&VideoProcessor::PostProcExecute);

/// Of packed frames without padding.
template <typename Options>
Options OptionsFor(const Kernel& kernel, const Geometry& g, const Settings& s) {
  auto options = WithSizes<Options>(g.inWidth, g.inHeight, g.outWidth, g.outHeight);
  options.input.format = options.output.format = VIDPROC_FORMAT_UYVY;
  options.alignment = VIDPROC_ALIGNMENT_CORNERS;
  options.taps = kernel.horizontalTaps;
  options.dither_level = static_cast<std::int32_t>(s.dither);
  options.dither_seed = 77;
  return options;
}

/// Kernels of a given width; the object's window goes with the strength.
template <typename Options>
Options ScalingOptions(const Kernel& kernel, const Geometry& g, const Settings& s) {
  auto options = OptionsFor<Options>(kernel, g, s);
  const bool isPost = kernel.family == Family::kPost;
  options.filter = s.strength % 2 == 0 ? VIDPROC_FILTER_GAUSSIAN
                   : isPost            ? VIDPROC_FILTER_TWO_SINCS
                                       : VIDPROC_FILTER_HAMMING_SINC;
  options.softening = static_cast<std::int32_t>(s.softening);
  options.sharpening = static_cast<std::int32_t>(s.strength);
  return options;
}

template <typename Options>
void ExpectTwins(const Options& options, const Kernel& kernel, const Geometry& g, const Settings& s) {
  golden::Stream checked = golden::StartChecked(options, {}), object = golden::StartKernel(kernel, g, s, Flush::kEnd);
  for (int n = 0; n < 3; ++n) {
    for (golden::Stream* const stream : {&checked, &object}) {
      stream->Paint(n);
      stream->Process();
      stream->out.Store();
    }
    ASSERT_EQ(checked.out.block, object.out.block)
        << g.inWidth << "x" << g.inHeight << " to " << g.outWidth << "x" << g.outHeight << ", softening " << s.softening
        << " strength " << s.strength << " edge " << int{s.adaptive} << " deblock " << int{s.deblock};
  }
}

TEST(PipelineAndProcessor, DenoiseAlike) {
  constexpr struct {
    Kernel kernel;
    Settings settings;
  } kCases[] = {{kDenoising, {.softening = 10, .adaptive = 1, .temporalStrength = 100}},
                {kDenoising, {.softening = 60, .adaptive = 4, .temporalStrength = 127, .temporalShift = 3}},
                {kDenoising, {.softening = 255, .adaptive = 8, .temporalStrength = 90, .temporalShift = 8}},
                {kDenoising, {.softening = 30, .dither = 7, .adaptive = 2}},
                {kSmoothing, {.softening = 30, .adaptive = 1, .temporalStrength = 100}},
                {kSmoothing, {.softening = 90, .adaptive = 3}},
                {kSixteenTapDenoising, {.softening = 100, .adaptive = 1, .temporalStrength = 80}},
                {kSixteenTapDenoising, {.adaptive = 1, .temporalStrength = 80, .temporalShift = 2}}};
  for (const auto& [width, height] : {std::pair{64, 40}, {200, 9}, {10, 3}, {2, 1}}) {
    const Geometry g{width, height, width, height};
    for (const auto& [kernel, s] : kCases) {
      // The object lays noise over rows rounded up to 16 pixels: at other widths it lies elsewhere.
      if (s.dither != 0 && width % 16 != 0) continue;
      auto options = OptionsFor<vidproc::PreOptions>(kernel, g, s);
      options.denoise_taps = kernel.horizontalTaps;
      options.denoise_edge = s.adaptive;
      options.denoise_softening = static_cast<std::int32_t>(s.softening);
      options.temporal_strength = s.temporalStrength;
      options.temporal_shift = s.temporalShift;
      options.motion_smoothing = kernel.motionGate;
      ExpectTwins(options, kernel, g, s);
    }
  }
}

TEST(PipelineAndProcessor, ScaleAlikeFromTheCorner) {
  // Rows of odd widths end with whole pairs, whose last Cr nobody touches.
  constexpr Geometry kSizes[] = {
      {64, 32, 32, 16}, {31, 17, 62, 40, 2, 0}, {97, 61, 13, 7, 2, 2}, {40, 30, 40, 30}, {2, 1, 9, 5, 0, 2}};
  for (const Geometry& g : kSizes) {
    for (const std::uint32_t softening : {0u, 3u, 40u}) {
      for (const std::uint32_t strength : {0u, 5u, 9u}) {
        const Settings s{.softening = softening, .strength = strength};
        for (const Kernel& kernel : {kPlain, kSixteenTaps}) {
          ExpectTwins(ScalingOptions<vidproc::PreOptions>(kernel, g, s), kernel, g, s);
        }
        ExpectTwins(ScalingOptions<vidproc::PostOptions>(kPost, g, s), kPost, g, s);
      }
    }
  }
}

TEST(PipelineAndProcessor, DeblockAlike) {
  const Geometry g{72, 50, 72, 50};
  for (const std::uint8_t level : std::initializer_list<std::uint8_t>{21, 40, 51, 200}) {
    const Settings s{.deblock = level};
    auto options = OptionsFor<vidproc::PostOptions>(kPost, g, s);
    options.deblock_level = level;
    ExpectTwins(options, kPost, g, s);
  }
}

}  // namespace
