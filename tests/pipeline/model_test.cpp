// Streams of random settings through the pipeline at every level, beside the plain model of the same processing.
#include <gtest/gtest.h>

#include <array>
#include <cstddef>
#include <sstream>

#include "filters/resampling_bank.h"
#include "filters/scaling_bank.h"
#include "noise/frame_noise.h"
#include "reference/picture.h"
#include "support/format_frame.h"
#include "support/kernel_harness.h"
#include "support/pipeline_settings.h"
#include "vidproc/video_processor.h"

namespace {

using testing_support::Content;
using testing_support::FirstDifference;
using testing_support::FormatFrame;
using testing_support::Painted;
using testing_support::Placement;
using testing_support::PlainSettings;
using testing_support::Random;
using testing_support::Samples;
using testing_support::SizeOf;
using vidproc::Alignment;
using vidproc::ChromaSiting;
using vidproc::FrameShape;
using vidproc::HalvesChromaRows;
using vidproc::Pipeline;
using vidproc::PipelineSettings;
using vidproc::PixelFormat;
using vidproc::ScalingFilter;
namespace filters = vidproc::filters;

reference::Chroma ChromaOf(const FrameShape& shape) {
  return {HalvesChromaRows(shape.format), shape.siting == ChromaSiting::kCentre};
}

reference::Picture PictureOf(const FrameShape& shape, const Samples& samples) {
  reference::Picture picture;
  picture.chroma = ChromaOf(shape);
  reference::Plane* const planes[] = {&picture.y, &picture.cb, &picture.cr};
  for (int c = 0; c < 3; ++c) {
    *planes[c] = reference::Plane(SizeOf(shape, c).width, SizeOf(shape, c).height);
    planes[c]->samples = samples.component[c];
  }
  return picture;
}

Samples SamplesOf(const reference::Picture& picture) {
  return {{picture.y.samples, picture.cb.samples, picture.cr.samples}};
}

bool HasOwnWidth(ScalingFilter filter) { return filter >= ScalingFilter::kGaussian; }

filters::ScalingFilter FilterOf(const PipelineSettings& settings) {
  static constexpr filters::ScalingKernel kKernels[] = {
      filters::ScalingKernel::kAutomatic,  filters::ScalingKernel::kBilinear,   filters::ScalingKernel::kCatmullRom,
      filters::ScalingKernel::kMitchell,   filters::ScalingKernel::kLanczos,    filters::ScalingKernel::kArea,
      filters::ScalingKernel::kFixedWidth, filters::ScalingKernel::kFixedWidth, filters::ScalingKernel::kFixedWidth};
  static constexpr std::uint32_t kKinds[] = {filters::kGaussian, filters::kHammingSinc, filters::kTwoSincs};
  const auto& scaling = settings.scaling;
  filters::ScalingFilter filter;
  filter.kernel = kKernels[static_cast<int>(scaling.filter)];
  filter.sharpening = static_cast<std::uint32_t>(scaling.sharpening);
  if (!HasOwnWidth(scaling.filter)) return filter;
  filter.fixedWidth = {kKinds[static_cast<int>(scaling.filter) - static_cast<int>(ScalingFilter::kGaussian)],
                       static_cast<std::uint32_t>(scaling.softening), static_cast<std::uint32_t>(scaling.lobes)};
  return filter;
}

reference::ScaleSettings ScalingOf(const PipelineSettings& settings) {
  reference::ScaleSettings scale;
  scale.outWidth = settings.output.width;
  scale.outHeight = settings.output.height;
  scale.outChroma = ChromaOf(settings.output);
  scale.horizontalTaps = settings.scaling.taps;
  scale.verticalTaps = settings.scaling.taps / 2;
  const bool ownWidth = HasOwnWidth(settings.scaling.filter);
  scale.precisionBits = ownWidth && settings.role == vidproc::Role::kPostProcessor ? 6 : 7;
  scale.fromCorners = settings.scaling.alignment == Alignment::kCorners;
  scale.halvesFirst = !ownWidth;
  scale.filtersWithoutResizing = ownWidth || settings.scaling.sharpening > 0;
  const filters::ScalingFilter asked = FilterOf(settings);
  scale.bank = [asked, bits = scale.precisionBits](const reference::BankRequest& request, reference::Bank& bank) {
    filters::ScalingFilter filter = request.halving ? filters::ScalingFilter{} : asked;
    if (request.samePlaces && filter.kernel != filters::ScalingKernel::kFixedWidth) {
      filter.kernel = filters::ScalingKernel::kIdentity;
    }
    ASSERT_TRUE(
        filters::DesignScalingBank(filter, request.up, request.down, request.taps, request.halving ? 7 : bits, bank));
  };
  return scale;
}

reference::DenoiseSettings DenoisingOf(const PipelineSettings& settings, int pass) {
  const auto& asked = settings.denoise;
  reference::DenoiseSettings denoise;
  denoise.edge = asked.softening == 0 ? 0 : asked.edge;
  denoise.horizontalTaps = asked.taps;
  denoise.verticalTaps = asked.taps / 2;
  denoise.temporalStrength = pass == 0 ? asked.temporalStrength : 0;
  denoise.temporalShift = asked.temporalShift;
  denoise.motionSmoothing = pass == 0 && asked.smoothsMotion;
  denoise.pairsAtBorders = settings.scaling.alignment == Alignment::kCorners;
  const filters::ResamplingKernel gaussian{filters::kGaussian, static_cast<std::uint32_t>(asked.softening), 0};
  filters::Bank bank{};
  filters::DesignResamplingBank(gaussian, denoise.verticalTaps, 7, bank);
  std::copy_n(bank[0], 16, denoise.vertical);
  filters::DesignResamplingBank(gaussian, denoise.horizontalTaps, 7, bank);
  std::copy_n(bank[0], 16, denoise.horizontal);
  return denoise;
}

/// The model of one stream.
class Model {
 public:
  explicit Model(const PipelineSettings& settings) : settings(settings) {}

  Samples Process(const Samples& input) {
    reference::Picture picture = PictureOf(settings.input, input);
    if (settings.denoise.edge > 0 || settings.denoise.temporalStrength > 0) {
      for (int pass = 0; pass < settings.denoise.passes; ++pass) {
        picture = reference::Denoise(picture, DenoisingOf(settings, pass), states[pass]);
      }
    }
    picture = reference::Scale(picture, ScalingOf(settings));
    if (settings.lumaGain != 64 || settings.lumaOffset != 0) {
      reference::ShiftLuma(picture.y, settings.lumaGain, settings.lumaOffset);
    }
    const std::vector<signed char> tiles = reference::MakeNoiseTiles(Spherical_Theta2_Guassian_Scaled_2By3);
    reference::Noise noise;
    noise.strength = settings.ditherLevel;
    noise.seed = static_cast<unsigned>(settings.ditherSeed);
    noise.seedTable = LFSR_SEED_TABLE;
    noise.tiles = tiles.data();
    reference::DitherLuma(picture.y, noise);
    return SamplesOf(picture);
  }

 private:
  const PipelineSettings settings;
  reference::DenoiseState states[3];
};

FrameShape DrawShape(Random& random, bool small) {
  static constexpr PixelFormat kFormats[] = {PixelFormat::kUyvy, PixelFormat::kYuyv, PixelFormat::kNv12,
                                             PixelFormat::kI420, PixelFormat::kI422};
  const int largest = small ? 20 : 150;
  return {random.Pick(kFormats), random.OneIn(2) ? ChromaSiting::kLeft : ChromaSiting::kCentre,
          random.Between(2, largest), random.Between(1, largest / 2)};
}

PipelineSettings DrawSettings(Random& random) {
  PipelineSettings settings = PlainSettings(DrawShape(random, random.OneIn(3)), DrawShape(random, random.OneIn(3)));
  if (random.OneIn(3)) {
    settings.output.width = settings.input.width;
    settings.output.height = settings.input.height;
  } else if (random.OneIn(3)) {
    settings.input.width = 2 * settings.output.width;
    settings.input.height = 2 * settings.output.height;
  }
  settings.role = random.OneIn(3) ? vidproc::Role::kPostProcessor : vidproc::Role::kPreProcessor;
  auto& scaling = settings.scaling;
  scaling.filter = static_cast<ScalingFilter>(random.Between(0, 8));
  if (!HasOwnWidth(scaling.filter) && random.OneIn(4)) scaling.alignment = Alignment::kCorners;
  scaling.taps = random.OneIn(2) ? 8 : 16;
  scaling.softening = random.OneIn(2) ? 0 : random.Between(1, 60);
  scaling.lobes = random.Between(1, 5);
  if (random.OneIn(3)) scaling.sharpening = random.Between(1, 16);
  if (random.OneIn(3)) {
    settings.lumaGain = random.Between(1, 80);
    settings.lumaOffset = random.Between(-100, 100);
  }
  if (random.OneIn(3)) settings.ditherLevel = random.Between(1, 12);
  settings.ditherSeed = random.Between(0, 255);
  if (settings.role == vidproc::Role::kPostProcessor || random.OneIn(2)) return settings;
  settings.denoise = {.edge = random.Between(0, 8),
                      .softening = random.OneIn(4) ? 0 : random.Between(1, 255),
                      .taps = random.OneIn(2) ? 8 : 16,
                      .temporalStrength = random.OneIn(4) ? 0 : random.Between(1, 127),
                      .temporalShift = random.Between(0, 8),
                      .smoothsMotion = random.OneIn(3),
                      .passes = random.Between(1, 3)};
  return settings;
}

std::string Describe(const PipelineSettings& s) {
  std::ostringstream text;
  const auto shape = [&](const FrameShape& f) {
    text << "format " << int(f.format) << " siting " << int(f.siting) << " " << f.width << "x" << f.height << ", ";
  };
  shape(s.input);
  shape(s.output);
  text << "role " << int(s.role) << " alignment " << int(s.scaling.alignment) << " filter " << int(s.scaling.filter)
       << " taps " << s.scaling.taps << " softening " << s.scaling.softening << " lobes " << s.scaling.lobes
       << " sharpening " << s.scaling.sharpening << " gain " << s.lumaGain << " offset " << s.lumaOffset << " dither "
       << s.ditherLevel << "; denoise edge " << s.denoise.edge << " softening " << s.denoise.softening << " taps "
       << s.denoise.taps << " temporal " << s.denoise.temporalStrength << ":" << s.denoise.temporalShift << " motion "
       << s.denoise.smoothsMotion << " passes " << s.denoise.passes;
  return text.str();
}

using PipelineModelTest = testing_support::AtEveryLevel;

TEST_P(PipelineModelTest, RandomStreamsComeOutByteForByte) {
  static constexpr Content kContents[] = {Content::kNoise, Content::kExtreme, Content::kSmooth, Content::kSteps,
                                          Content::kDrift, Content::kDrift,   Content::kStill};
  constexpr int kStreams = 200;
  for (std::uint32_t seed = 0; seed < kStreams; ++seed) {
    Random random(seed);
    const PipelineSettings settings = DrawSettings(random);
    SCOPED_TRACE("seed " + std::to_string(seed) + ": " + Describe(settings));
    Model model(settings);
    Pipeline pipeline(settings, nullptr);
    const Placement inputPlacement{random.OneIn(2) ? 0 : random.Between(1, 70), random.OneIn(3)};
    const Placement outputPlacement{random.OneIn(2) ? 0 : random.Between(1, 70), random.OneIn(3)};
    FormatFrame input(settings.input, inputPlacement, random);
    FormatFrame output(settings.output, outputPlacement, random);
    Samples picture = Painted(settings.input, Content::kSmooth, random);
    for (int frame = 0; frame < 3; ++frame) {
      const Content content = random.Pick(kContents);
      for (int c = 0; c < 3; ++c) {
        Paint(content, SizeOf(settings.input, c).width, SizeOf(settings.input, c).height, random, picture.component[c]);
      }
      input.Put(picture);
      pipeline.Process(input.Input(), output.Output());
      // An odd width's last Cr may have no room in either frame: what the frames hold counts.
      FormatFrame expected(settings.output, outputPlacement, random);
      expected.Put(model.Process(input.Get()));
      ASSERT_EQ(FirstDifference(settings.output, expected.Get(), output.Get()), "") << "frame " << frame;
      ASSERT_EQ(output.FirstForeignWrite(), "");
    }
  }
}

RUN_AT_EVERY_LEVEL(PipelineModelTest);

}  // namespace
