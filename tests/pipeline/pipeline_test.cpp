// The pipeline seen from outside: what must hold for every pair of formats, filter and size.
#include "pipeline/pipeline.h"

#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <numbers>
#include <sstream>
#include <utility>
#include <vector>

#include "levels/cpu_level.h"
#include "support/format_frame.h"
#include "support/pipeline_settings.h"

namespace {

using testing_support::Content;
using testing_support::FirstDifference;
using testing_support::Flush;
using testing_support::FormatFrame;
using testing_support::Painted;
using testing_support::Placement;
using testing_support::PlainSettings;
using testing_support::Random;
using testing_support::Samples;
using vidproc::Alignment;
using vidproc::ChromaSiting;
using vidproc::FrameShape;
using vidproc::HalvesChromaRows;
using vidproc::Pipeline;
using vidproc::PipelineSettings;
using vidproc::PixelFormat;
using vidproc::ScalingFilter;

constexpr PixelFormat kFormats[] = {PixelFormat::kUyvy, PixelFormat::kYuyv, PixelFormat::kNv12, PixelFormat::kI420,
                                    PixelFormat::kI422};
constexpr Placement kPlacements[] = {
    {0, false, Flush::kEnd}, {0, false, Flush::kBegin}, {5, false, Flush::kEnd}, {3, true, Flush::kBegin}};

/// The format that has a plane for every component, with the same sampling.
PixelFormat PlanarLike(PixelFormat format) {
  return HalvesChromaRows(format) ? PixelFormat::kI420 : PixelFormat::kI422;
}

FrameShape ShapeOf(PixelFormat format, int width, int height) { return {format, ChromaSiting::kLeft, width, height}; }

std::string Describe(const PipelineSettings& s) {
  std::ostringstream text;
  text << "format " << int(s.input.format) << " " << s.input.width << "x" << s.input.height << " to "
       << int(s.output.format) << " " << s.output.width << "x" << s.output.height << ", alignment "
       << int(s.scaling.alignment) << ", filter " << int(s.scaling.filter) << ", taps " << s.scaling.taps;
  return text.str();
}

/// A stream through one pipeline: frames in, samples out, memory checked on the way.
class Stream {
 public:
  explicit Stream(const PipelineSettings& settings, const Placement& placement = {})
      : settings(settings), pipeline(std::make_unique<Pipeline>(settings, nullptr)), placement(placement) {}

  Samples Run(const Samples& in) {
    FormatFrame input(settings.input, placement, random);
    FormatFrame output(settings.output, placement, random);
    input.Put(in);
    pipeline->Process(input.Input(), output.Output());
    EXPECT_EQ(FirstDifference(settings.input, in, input.Get()), "") << "the input has changed";
    EXPECT_EQ(output.FirstForeignWrite(), "");
    return output.Get();
  }
  Samples RunInPlace(const Samples& in) {
    FormatFrame frame(settings.input, placement, random);
    frame.Put(in);
    pipeline->Process(frame.Input(), frame.Output());
    EXPECT_EQ(frame.FirstForeignWrite(), "");
    return frame.Get();
  }
  void Reconfigure(const PipelineSettings& now) {
    auto next = std::make_unique<Pipeline>(now, pipeline.get());
    next->TakeHistory(*pipeline);
    pipeline = std::move(next);
    settings = now;
  }
  void ForgetHistory() { pipeline->ForgetHistory(); }

 private:
  PipelineSettings settings;
  std::unique_ptr<Pipeline> pipeline;
  Placement placement;
  Random random{7};
};

/// Everything at once, so that every stage is there.
PipelineSettings FullSettings(const FrameShape& input, const FrameShape& output) {
  PipelineSettings settings = PlainSettings(input, output);
  settings.denoise = {
      .edge = 1, .softening = 30, .taps = 8, .temporalStrength = 100, .temporalShift = 1, .smoothsMotion = true};
  settings.scaling.sharpening = 3;
  settings.lumaGain = 70;
  settings.lumaOffset = 4;
  settings.ditherLevel = 8;
  settings.ditherSeed = 9;
  return settings;
}

struct Resize {
  int inWidth, inHeight, outWidth, outHeight;
};
constexpr Resize kResizes[] = {{2, 1, 2, 1},     {3, 5, 7, 2},       {64, 32, 32, 16},   {33, 17, 65, 33},
                               {97, 61, 13, 7},  {260, 4, 2, 1},     {2, 64, 150, 3},    {150, 48, 100, 32},
                               {61, 40, 61, 40}, {192, 90, 101, 77}, {130, 66, 390, 50}, {1000, 20, 30, 1}};

/// Any pair of formats gives the samples that the planar ones with the same samplings give, however its frames lie in
/// memory.
TEST(Pipeline, FormatsAgree) {
  Random random(2);
  for (const Resize& size : kResizes) {
    for (const PixelFormat from : kFormats) {
      for (const PixelFormat to : kFormats) {
        const FrameShape input = ShapeOf(from, size.inWidth, size.inHeight);
        const FrameShape output = ShapeOf(to, size.outWidth, size.outHeight);
        PipelineSettings settings = random.OneIn(2) ? FullSettings(input, output) : PlainSettings(input, output);
        settings.scaling.taps = settings.denoise.taps = random.OneIn(2) ? 8 : 16;
        settings.scaling.alignment = random.OneIn(3) ? Alignment::kCorners : Alignment::kCentres;
        PipelineSettings planar = settings;
        planar.input.format = PlanarLike(from);
        planar.output.format = PlanarLike(to);
        // Where a tight packed row of odd width has no last Cr, that before it stands in.
        const Placement placement = random.Pick(kPlacements);
        Stream stream(settings, placement);
        Stream planarStream(planar);
        for (int frame = 0; frame < 3; ++frame) {
          FormatFrame original(input, placement, random);
          original.Put(Painted(input, frame == 1 ? Content::kNoise : Content::kSmooth, random));
          FormatFrame expected(output, placement, random);
          expected.Put(planarStream.Run(original.Get()));
          ASSERT_EQ(FirstDifference(output, expected.Get(), stream.Run(original.Get())), "")
              << Describe(settings) << ", frame " << frame;
        }
      }
    }
  }
}

TEST(Pipeline, FrameMayBeItsOwnOutput) {
  Random random(3);
  for (const Resize& size : kResizes) {
    for (const PixelFormat format : kFormats) {
      for (int variant = 0; variant < 4; ++variant) {
        const FrameShape shape = ShapeOf(format, size.inWidth, size.inHeight);
        PipelineSettings settings = variant % 2 == 0 ? PlainSettings(shape, shape) : FullSettings(shape, shape);
        if (variant == 2) settings.scaling.sharpening = 5;
        settings.scaling.taps = settings.denoise.taps = variant < 2 ? 8 : 16;
        settings.output.siting = variant == 1 ? ChromaSiting::kCentre : ChromaSiting::kLeft;
        const Placement& placement = kPlacements[variant];
        Stream apart(settings, placement);
        Stream inPlace(settings, placement);
        for (int frame = 0; frame < 2; ++frame) {
          FormatFrame original(shape, placement, random);
          original.Put(Painted(shape, Content::kNoise, random));
          const Samples expected = apart.Run(original.Get());
          ASSERT_EQ(FirstDifference(shape, expected, inPlace.RunInPlace(original.Get())), "") << Describe(settings);
        }
      }
    }
  }
}

/// History belongs to the picture, whatever the settings: it goes on as long as input size and sampling stay.
TEST(Pipeline, HistorySurvivesChangesOfSettings) {
  Random random(4);
  const FrameShape shape = ShapeOf(PixelFormat::kI420, 70, 34);
  const PipelineSettings settings = FullSettings(shape, shape);
  struct Change {
    const char* name;
    void (*apply)(PipelineSettings&);
    bool keepsHistory;
  };
  const Change changes[] = {
      {"nothing", [](PipelineSettings&) {}, true},
      {"input format", [](PipelineSettings& s) { s.input.format = PixelFormat::kNv12; }, true},
      {"output", [](PipelineSettings& s) { s.output = ShapeOf(PixelFormat::kUyvy, 30, 20); }, true},
      {"sampling", [](PipelineSettings& s) { s.input.format = PixelFormat::kI422; }, false},
      {"size", [](PipelineSettings& s) { s.input.height -= 2; }, false},
      {"no history", [](PipelineSettings& s) { s.denoise.edge = s.denoise.temporalStrength = 0; }, false},
  };
  for (const Change& change : changes) {
    PipelineSettings changed = settings;
    change.apply(changed);
    Samples first = Painted(shape, Content::kSmooth, random);
    Samples second = first;
    testing_support::Paint(Content::kDrift, 70, 34, random, second.component[0]);
    Stream stream(settings);
    stream.Run(first);
    stream.Reconfigure(changed);
    if (!change.keepsHistory) {
      // Back to what it was: a history that was to be lost must not come back.
      stream.Reconfigure(settings);
      changed = settings;
    }
    Stream reference(settings);
    if (change.keepsHistory) reference.Run(first);
    if (change.keepsHistory && std::string(change.name) == "input format") {
      EXPECT_EQ(FirstDifference(changed.output, reference.Run(second), stream.Run(second)), "") << change.name;
      // and back, from pairs to planes
      stream.Reconfigure(settings);
      EXPECT_EQ(FirstDifference(shape, reference.Run(first), stream.Run(first)), "") << change.name;
    } else if (changed.output.width == shape.width) {
      EXPECT_EQ(FirstDifference(changed.output, reference.Run(second), stream.Run(second)), "") << change.name;
    } else {
      Stream scaled(changed);
      scaled.Run(first);
      EXPECT_EQ(FirstDifference(changed.output, scaled.Run(second), stream.Run(second)), "") << change.name;
    }
  }
  Stream stream(settings);
  const Samples frame = Painted(shape, Content::kNoise, random);
  const Samples asFirst = stream.Run(frame);
  const Samples asSecond = stream.Run(Painted(shape, Content::kNoise, random));
  stream.ForgetHistory();
  EXPECT_EQ(FirstDifference(shape, asFirst, stream.Run(frame)), "");
}

/// Where sample k of an axis lies in the picture, in luma samples.
double PlaceOf(const FrameShape& shape, int component, bool isVertical, int k) {
  if (component == 0 || (isVertical && !HalvesChromaRows(shape.format))) return k + 0.5;
  return 2 * k + (isVertical || shape.siting == ChromaSiting::kCentre ? 1.0 : 0.5);
}

/// Waves along both axes, steep enough for a small shift to show in bytes; kWaves of them across the picture.
constexpr int kWaves = 6;
constexpr double kAmplitude = 55;
double Angle(double place, int size) { return 2 * std::numbers::pi * kWaves * place / size; }

Samples Waves(const FrameShape& shape) {
  Samples samples;
  for (int c = 0; c < 3; ++c) {
    const testing_support::ComponentSize size = testing_support::SizeOf(shape, c);
    for (int y = 0; y < size.height; ++y) {
      for (int x = 0; x < size.width; ++x) {
        const double sum = std::sin(Angle(PlaceOf(shape, c, false, x), shape.width)) +
                           std::sin(Angle(PlaceOf(shape, c, true, y), shape.height));
        samples.component[c].push_back(static_cast<std::uint8_t>(128.5 + kAmplitude * sum));
      }
    }
  }
  return samples;
}

/// How far the waves of a component have moved along an axis, in waves, over all but the outermost of them. Sizes are
/// multiples of their number. Loss of height, as by a low-pass, does not show.
double ShiftOf(const FrameShape& shape, const Samples& samples, int component, bool isVertical) {
  const testing_support::ComponentSize size = testing_support::SizeOf(shape, component);
  const int sideLength = isVertical ? shape.height : shape.width;
  double product = 0;
  double height = 0;
  for (int y = size.height / 6; y < size.height - size.height / 6; ++y) {
    for (int x = size.width / 6; x < size.width - size.width / 6; ++x) {
      const double angle = Angle(PlaceOf(shape, component, isVertical, isVertical ? y : x), sideLength);
      const double value = samples.component[component][static_cast<std::size_t>(y * size.width + x)] - 128.0;
      product += value * std::cos(angle);
      height += value * std::sin(angle);
    }
  }
  return std::atan2(product, height) / (2 * std::numbers::pi);
}

/// No resize moves the picture, and nothing adds up over rounds of shrinking and enlarging: not even in chroma beside
/// the first luma sample, which has the same phase everywhere at 2:1. At 7:24 one of three of its positions lies in the
/// middle between two sixteenths and is rounded up: 1/96 of a sample a round.
TEST(Pipeline, NothingDrifts) {
  constexpr double kLimit = 1.0 / 32;
  const FrameShape full = ShapeOf(PixelFormat::kI420, 288, 288);
  for (const auto& [up, down] : {std::pair{1, 2}, {2, 3}, {3, 4}, {1, 3}, {1, 4}, {5, 6}, {7, 24}}) {
    for (const int taps : {8, 16}) {
      const FrameShape scaled = ShapeOf(PixelFormat::kNv12, full.width * up / down, full.height * up / down);
      PipelineSettings shrink = PlainSettings(full, scaled);
      PipelineSettings enlarge = PlainSettings(scaled, full);
      shrink.scaling.taps = enlarge.scaling.taps = taps;
      Stream shrinking(shrink);
      Stream enlarging(enlarge);
      Samples picture = Waves(full);
      double before[3][2] = {};
      for (int round = 0; round < 5; ++round) {
        const Samples small = shrinking.Run(picture);
        picture = enlarging.Run(small);
        for (int c = 0; c < 3; ++c) {
          for (const bool isVertical : {false, true}) {
            const double samplesOfWave = testing_support::SizeOf(scaled, c).width / double{kWaves};
            const double afterShrinking = ShiftOf(scaled, small, c, isVertical) * samplesOfWave;
            const double afterBoth = ShiftOf(full, picture, c, isVertical) * samplesOfWave;
            EXPECT_LT(std::abs(afterShrinking - before[c][isVertical]), kLimit) << Describe(shrink) << ", " << c;
            EXPECT_LT(std::abs(afterBoth - afterShrinking), kLimit) << Describe(enlarge) << ", " << c;
            EXPECT_LT(std::abs(afterBoth), c != 0 && up == 7 ? 2 * kLimit : kLimit)
                << Describe(enlarge) << ", " << c << ", round " << round;
            before[c][isVertical] = afterBoth;
          }
        }
      }
    }
  }
}

}  // namespace
