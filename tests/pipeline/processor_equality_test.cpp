// What the pipeline shares with the processor object, byte for byte: denoising at equal sizes, deblocking, and scaling
// by kernels of a given width, counted from the corner.
#include <gtest/gtest.h>

#include <memory>
#include <vector>

#include "pipeline/pipeline.h"
#include "support/format_frame.h"
#include "support/pipeline_settings.h"
#include "vidproc/video_processor.h"

namespace {

using testing_support::Content;
using testing_support::FirstDifference;
using testing_support::FormatFrame;
using testing_support::Painted;
using testing_support::PlainSettings;
using testing_support::Random;
using testing_support::Samples;
using vidproc::Alignment;
using vidproc::ChromaSiting;
using vidproc::DenoiseSettings;
using vidproc::FrameShape;
using vidproc::Pipeline;
using vidproc::PipelineSettings;
using vidproc::PixelFormat;
using vidproc::Role;
using vidproc::ScalingFilter;

using Kernel = int (VideoProcessor::*)();

FrameShape PackedShape(int width, int height) { return {PixelFormat::kUyvy, ChromaSiting::kLeft, width, height}; }

/// The object set up with a pipeline's settings.
class Object {
 public:
  Object(const PipelineSettings& settings, int softening, std::uint32_t windowKind, int taps)
      : processor(settings.role == Role::kPreProcessor, softening) {
    processor.inWidth = static_cast<std::uint32_t>(settings.input.width);
    processor.inHeight = static_cast<std::uint32_t>(settings.input.height);
    processor.inStride = 2 * processor.inWidth;
    processor.outWidth = static_cast<std::uint32_t>(settings.output.width);
    processor.outHeight = static_cast<std::uint32_t>(settings.output.height);
    processor.outStride = 2 * processor.outWidth;
    processor.windowKind = windowKind;
    processor.lanczosLobes = static_cast<std::uint32_t>(settings.scaling.lobes);
    processor.SetTaps(taps == 16);
    const unsigned bits = settings.role == Role::kPreProcessor ? 7 : 6;
    processor.SetEnhanceFilter(EnhanceLaplacian4, static_cast<unsigned>(settings.scaling.sharpening), bits, 64, 0);
    processor.ditherLevel = static_cast<std::uint32_t>(settings.ditherLevel);
    processor.ditherSeed = settings.ditherSeed;
    processor.deblockTestPattern = 0;
  }
  ~Object() { std::free(processor.ditherTable); }
  Object(const Object&) = delete;
  Object& operator=(const Object&) = delete;

  void Run(Kernel kernel, FormatFrame& source, FormatFrame& destination) {
    processor.srcFrame = const_cast<std::uint8_t*>(source.Input().plane[0]);
    processor.dstFrame = destination.Output().plane[0];
    (processor.*kernel)();
  }

  VideoProcessor processor;
};

/// Three frames through both.
void ExpectEqual(const PipelineSettings& settings, Object& object, Kernel kernel, const char* name) {
  Random random(5);
  Pipeline pipeline(settings, nullptr);
  for (const Content content : {Content::kSmooth, Content::kNoise, Content::kExtreme}) {
    const Samples picture = Painted(settings.input, content, random);
    FormatFrame input(settings.input, {}, random);
    FormatFrame output(settings.output, {}, random);
    FormatFrame source(settings.input, {}, random);
    FormatFrame destination(settings.output, {}, random);
    input.Put(picture);
    source.Put(picture);
    pipeline.Process(input.Input(), output.Output());
    object.Run(kernel, source, destination);
    ASSERT_EQ(FirstDifference(settings.output, destination.Get(), output.Get()), "")
        << name << ", " << settings.input.width << "x" << settings.input.height << " to " << settings.output.width
        << "x" << settings.output.height;
  }
}

TEST(PipelineAndProcessor, DenoiseAlike) {
  struct Case {
    const char* name;
    DenoiseSettings settings;
    Kernel kernel;
  };
  const Case cases[] = {
      {"taps 8", {1, 10, 8, 100, 0, false}, &VideoProcessor::PreProcAdaptiveExecute},
      {"strong edge", {4, 60, 8, 127, 3, false}, &VideoProcessor::PreProcAdaptiveExecute},
      {"wrapping shifts", {8, 255, 8, 90, 8, false}, &VideoProcessor::PreProcAdaptiveExecute},
      {"no history", {2, 30, 8, 0, 0, false}, &VideoProcessor::PreProcAdaptiveExecute},
      {"motion", {1, 30, 8, 100, 0, true}, &VideoProcessor::PreProcAdaptiveMotionSmoothingExecute},
      {"motion without history", {3, 90, 8, 0, 0, true}, &VideoProcessor::PreProcAdaptiveMotionSmoothingExecute},
      {"taps 16", {1, 100, 16, 80, 0, false}, &VideoProcessor::PreProcAdaptive16TapTemporalExecute},
      {"no softening", {1, 0, 16, 80, 2, false}, &VideoProcessor::PreProcAdaptive16TapTemporalExecute},
  };
  for (const auto& [width, height] : {std::pair{64, 40}, {200, 9}, {10, 3}, {2, 1}}) {
    for (const Case& c : cases) {
      PipelineSettings settings = PlainSettings(PackedShape(width, height), PackedShape(width, height));
      settings.scaling.alignment = Alignment::kCorners;
      settings.denoise = c.settings;
      if (width % 16 == 0) settings.ditherLevel = 7;
      Object object(settings, c.settings.softening, 2, c.settings.taps);
      object.processor.SetAdaptive(static_cast<unsigned char>(c.settings.edge));
      object.processor.SetTemporalFilter(static_cast<unsigned char>(c.settings.temporalStrength),
                                         static_cast<unsigned char>(c.settings.temporalShift));
      object.processor.SetUseSpatialMotionSmoothing(c.settings.smoothsMotion);
      ExpectEqual(settings, object, c.kernel, c.name);
    }
  }
}

TEST(PipelineAndProcessor, ScaleAlikeFromTheCorner) {
  struct Case {
    const char* name;
    Role role;
    ScalingFilter filter;
    int taps, softening, lobes, sharpening;
    Kernel kernel;
  };
  const Case cases[] = {
      {"Gaussian", Role::kPreProcessor, ScalingFilter::kGaussian, 8, 10, 3, 0, &VideoProcessor::PreProcExecute},
      {"sharp Gaussian", Role::kPreProcessor, ScalingFilter::kGaussian, 8, 3, 3, 9, &VideoProcessor::PreProcExecute},
      {"Hamming", Role::kPreProcessor, ScalingFilter::kHammingSinc, 8, 20, 3, 2, &VideoProcessor::PreProcExecute},
      {"two sincs", Role::kPreProcessor, ScalingFilter::kTwoSincs, 8, 0, 2, 0, &VideoProcessor::PreProcExecute},
      {"taps 16", Role::kPreProcessor, ScalingFilter::kGaussian, 16, 40, 3, 0,
       &VideoProcessor::PreProcAdaptive16TapExecute},
      {"post", Role::kPostProcessor, ScalingFilter::kTwoSincs, 8, 0, 3, 0, &VideoProcessor::PostProcExecute},
      {"sharp post", Role::kPostProcessor, ScalingFilter::kTwoSincs, 8, 5, 3, 6, &VideoProcessor::PostProcExecute},
  };
  const int sizes[][4] = {{64, 32, 32, 16}, {31, 17, 62, 40}, {97, 61, 13, 7}, {40, 30, 40, 30}, {2, 1, 9, 5}};
  for (const auto& size : sizes) {
    for (const Case& c : cases) {
      PipelineSettings settings = PlainSettings(PackedShape(size[0], size[1]), PackedShape(size[2], size[3]));
      settings.role = c.role;
      settings.scaling = {Alignment::kCorners, c.filter, c.taps, c.softening, c.lobes, c.sharpening};
      const auto windowKind = static_cast<std::uint32_t>(int(ScalingFilter::kTwoSincs) - int(c.filter));
      Object object(settings, c.softening, windowKind, c.taps);
      ExpectEqual(settings, object, c.kernel, c.name);
    }
  }
}

TEST(PipelineAndProcessor, DeblockAlike) {
  for (const int level : {21, 40, 51, 200}) {
    PipelineSettings settings = PlainSettings(PackedShape(72, 50), PackedShape(72, 50));
    settings.role = Role::kPostProcessor;
    settings.deblockLevel = level;
    Object object(settings, 0, 0, 8);
    object.processor.InitDeblocker(static_cast<unsigned char>(level));
    ExpectEqual(settings, object, &VideoProcessor::PostProcExecute, "deblocking");
  }
}

/// Chroma of 4:2:0 is deblocked as the picture of half the size that it is, luma as ever.
TEST(Pipeline, DeblocksEachComponentAtItsOwnSize) {
  Random random(6);
  const FrameShape shape{PixelFormat::kI420, ChromaSiting::kLeft, 80, 36};
  const FrameShape small{PixelFormat::kI422, ChromaSiting::kLeft, 80, 18};
  const Samples picture = Painted(shape, Content::kNoise, random);
  Samples half = picture;
  half.component[0].resize(80 * 18);
  const auto deblocked = [&](const FrameShape& of, const Samples& samples) {
    PipelineSettings settings = PlainSettings(of, of);
    settings.role = Role::kPostProcessor;
    settings.deblockLevel = 35;
    Pipeline pipeline(settings, nullptr);
    FormatFrame input(of, {}, random);
    FormatFrame output(of, {}, random);
    input.Put(samples);
    pipeline.Process(input.Input(), output.Output());
    return output.Get();
  };
  Samples whole = picture;
  FrameShape full = shape;
  full.format = PixelFormat::kI422;
  whole.component[1].resize(40 * 36);
  whole.component[2].resize(40 * 36);
  Samples expected = deblocked(small, half);
  expected.component[0] = deblocked(full, whole).component[0];
  EXPECT_EQ(FirstDifference(shape, expected, deblocked(shape, picture)), "");
}

}  // namespace
