// Streams of random settings through the checked interface at every level, beside the plain model of the same
// processing.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <vector>

#include "filters/resampling_bank.h"
#include "filters/scaling_bank.h"
#include "fuzz/checked_frames.h"
#include "golden/streams.h"
#include "noise/frame_noise.h"
#include "reference/picture.h"

namespace {

using namespace testing_support;
namespace filters = vidproc::filters;

bool HasOwnWidth(const vidproc_pre_options& o) { return o.filter >= VIDPROC_FILTER_GAUSSIAN; }

reference::Chroma ChromaOf(const vidproc_frame_info& info) {
  return {HalvesChromaRows(info.format), info.siting == VIDPROC_SITING_CENTRE};
}

filters::ScalingDesign FilterOf(const vidproc_pre_options& o) {
  static constexpr filters::ScalingKernel kKernels[] = {
      filters::ScalingKernel::kAutomatic, filters::ScalingKernel::kBilinear, filters::ScalingKernel::kCatmullRom,
      filters::ScalingKernel::kMitchell,  filters::ScalingKernel::kLanczos,  filters::ScalingKernel::kArea};
  static constexpr std::uint32_t kKinds[] = {filters::kGaussian, filters::kHammingSinc, filters::kTwoSincs};
  filters::ScalingDesign filter;
  filter.sharpening = static_cast<std::uint32_t>(o.sharpening);
  filter.kernel = HasOwnWidth(o) ? filters::ScalingKernel::kFixedWidth : kKernels[o.filter];
  if (HasOwnWidth(o)) {
    filter.fixedWidth = {kKinds[o.filter - VIDPROC_FILTER_GAUSSIAN], static_cast<std::uint32_t>(o.softening),
                         static_cast<std::uint32_t>(o.lobes)};
  }
  return filter;
}

reference::ScaleSettings ScalingOf(const vidproc_pre_options& o, bool isPost) {
  reference::ScaleSettings scale;
  scale.outWidth = o.output.width;
  scale.outHeight = o.output.height;
  scale.outChroma = ChromaOf(o.output);
  scale.horizontalTaps = o.taps;
  scale.verticalTaps = o.taps / 2;
  scale.precisionBits = HasOwnWidth(o) && isPost ? 6 : 7;
  scale.fromCorners = o.alignment == VIDPROC_ALIGNMENT_CORNERS;
  scale.halvesFirst = !HasOwnWidth(o);
  scale.filtersWithoutResizing = HasOwnWidth(o) || o.sharpening > 0;
  scale.bank = [asked = FilterOf(o), bits = scale.precisionBits](const reference::BankRequest& request,
                                                                 reference::Bank& bank) {
    filters::ScalingDesign filter = request.halving ? filters::ScalingDesign{} : asked;
    if (request.samePlaces && filter.kernel != filters::ScalingKernel::kFixedWidth) {
      filter.kernel = filters::ScalingKernel::kIdentity;
    }
    ASSERT_TRUE(
        filters::DesignScalingBank(filter, request.up, request.down, request.taps, request.halving ? 7 : bits, bank));
  };
  return scale;
}

reference::DenoiseSettings DenoisingOf(const vidproc_pre_options& o, int pass) {
  reference::DenoiseSettings denoise;
  denoise.edge = o.denoise_softening == 0 ? 0 : o.denoise_edge;
  denoise.horizontalTaps = o.denoise_taps;
  denoise.verticalTaps = o.denoise_taps / 2;
  denoise.temporalStrength = pass == 0 ? o.temporal_strength : 0;
  denoise.temporalShift = o.temporal_shift;
  denoise.motionSmoothing = pass == 0 && o.motion_smoothing != 0;
  denoise.pairsAtBorders = o.alignment == VIDPROC_ALIGNMENT_CORNERS;
  const filters::ResamplingKernel gaussian{filters::kGaussian, static_cast<std::uint32_t>(o.denoise_softening), 0};
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
  Model(const vidproc_pre_options& options, bool isPost) : options(options), isPost(isPost) {}

  reference::Picture Process(reference::Picture picture) {
    if (options.denoise_edge > 0 || options.temporal_strength > 0) {
      for (int pass = 0; pass < options.denoise_passes; ++pass) {
        picture = reference::Denoise(picture, DenoisingOf(options, pass), states[pass]);
      }
    }
    picture = reference::Scale(picture, ScalingOf(options, isPost));
    if (options.luma_gain != 64 || options.luma_offset != 0) {
      reference::ShiftLuma(picture.y, options.luma_gain, options.luma_offset);
    }
    const std::vector<signed char> tiles = reference::MakeNoiseTiles(Spherical_Theta2_Guassian_Scaled_2By3);
    reference::Noise noise;
    noise.strength = options.dither_level;
    noise.seed = static_cast<unsigned>(options.dither_seed);
    noise.seedTable = LFSR_SEED_TABLE;
    noise.tiles = tiles.data();
    reference::DitherLuma(picture.y, noise);
    return picture;
  }

 private:
  const vidproc_pre_options options;
  const bool isPost;
  reference::DenoiseState states[3];
};

using Block = std::vector<std::uint8_t>;

/// Calls take(sample in the block, sample of the picture) for all of them.
template <typename Take>
void ForEachSample(const vidproc_frame_info& info, Block& block, reference::Picture& picture, const Take& take) {
  reference::Plane* const planes[] = {&picture.y, &picture.cb, &picture.cr};
  for (int c = 0; c < 3; ++c) {
    const fuzzing::Samples samples = fuzzing::ComponentOf(vidproc::OutputOver(info, block), c);
    if (planes[c]->samples.empty()) *planes[c] = reference::Plane(samples.width, samples.height);
    for (int y = 0; y < samples.height; ++y) {
      for (int x = 0; x < samples.width; ++x) take(samples.At(x, y), planes[c]->At(x, y));
    }
  }
}

/// The last pair of a packed row of odd width: its luma stands twice where there is room; else it has the Cr of the
/// pair before it.
void FinishOddRows(const vidproc_frame_info& info, bool hasRoom, Block& block) {
  if (!IsPacked(info.format) || info.width % 2 == 0) return;
  const std::size_t rowBytes = 2 * static_cast<std::size_t>(info.width) + 2, luma = info.format == VIDPROC_FORMAT_UYVY;
  for (std::size_t end = rowBytes; end <= block.size(); end += rowBytes) {
    block[end - 2 + luma] = block[end - 4 + luma];
    if (!hasRoom) block[end - 1 - luma] = block[end - 5 - luma];
  }
}

/// Both kinds of options begin alike.
template <typename Options>
vidproc_pre_options Known(const Options& options) {
  vidproc_pre_options known = vidproc::PreOptions();
  std::memcpy(&known, &options, std::min(sizeof(options), offsetof(vidproc_post_options, deblock_level)));
  return known;
}
template <>
vidproc_pre_options Known(const vidproc_pre_options& options) {
  return options;
}

template <typename Options, typename Given>
void RunStream(Random& random) {
  std::uint8_t bytes[96];
  random.Fill(bytes);
  fuzzing::Input drawn(bytes, sizeof(bytes));
  Given given;
  static_cast<Options&>(given) = fuzzing::DrawOptions<Options>(drawn);
  // Without offsets that large gains refuse, and what the model does not describe: corners with kernels of a given
  // width, automatic denoising, deblocking. processor_equality_test.cpp and golden/ hold those.
  given.luma_offset = std::max(given.luma_offset, -3);
  if (given.filter >= VIDPROC_FILTER_GAUSSIAN) given.alignment = VIDPROC_ALIGNMENT_CENTRES;
  if (random.OneIn(6)) given.input.width = 2 * given.output.width, given.input.height = 2 * given.output.height;
  if constexpr (fuzzing::kIsPre<Options>) given.denoise_auto = 0;
  if constexpr (!fuzzing::kIsPre<Options>) given.deblock_level = 0;

  // Rows about as long as whole vectors, where kernels might read or write too far.
  if (random.OneIn(3)) given.input.width = random.Pick({15, 17, 31, 33, 63, 65, 127, 128, 129});
  const bool inPlace = random.OneIn(6);
  if (inPlace) given.output = given.input;
  const golden::Placement placement{random.OneIn(2) ? 0 : random.Between(1, 70), random.OneIn(3),
                                    random.OneIn(3) ? Flush::kBegin : Flush::kEnd, inPlace};
  golden::Stream stream = golden::StartChecked(given, placement);
  Model model(Known<Options>(given), !fuzzing::kIsPre<Options>);
  const auto read = [](std::uint8_t from, std::uint8_t& to) { to = from; };
  const auto write = [](std::uint8_t& to, std::uint8_t from) { to = from; };
  Block& source = stream.in.block;
  reference::Picture picture{ChromaOf(given.input), {}, {}, {}};
  ForEachSample(given.input, source, picture, read);
  for (int frame = 0; frame < 3; ++frame) {
    constexpr Content kContents[] = {Content::kNoise, Content::kExtreme, Content::kSmooth, Content::kSteps,
                                     Content::kDrift, Content::kDrift,   Content::kStill};
    const Content content = frame == 0 ? Content::kSmooth : random.Pick(kContents);
    for (reference::Plane* const plane : {&picture.y, &picture.cb, &picture.cr}) {
      Paint(content, plane->width, plane->height, random, plane->samples);
    }
    ForEachSample(given.input, source, picture, write);
    FinishOddRows(given.input, placement.padding >= 2, source);
    stream.in.Load();
    ForEachSample(given.input, source, picture, read);
    stream.Process();
    stream.in.Store();
    stream.out.Store();
    Block& actual = inPlace ? source : stream.out.block;
    Block expected(actual.size());
    reference::Picture result = model.Process(picture);
    ForEachSample(given.output, expected, result, write);
    for (Block* const block : {&expected, &actual}) FinishOddRows(given.output, placement.padding >= 2, *block);
    const auto at = std::ranges::mismatch(expected, actual).in1 - expected.begin();
    ASSERT_EQ(actual, expected) << "frame " << frame << ", byte " << at;
  }
}

using PipelineModelTest = AtEveryLevel;

TEST_P(PipelineModelTest, RandomStreamsComeOutByteForByte) {
  for (std::uint32_t seed = 0; seed < 500; ++seed) {
    SCOPED_TRACE(seed);
    Random random(seed);
    if (seed % 3 == 0) {
      RunStream<vidproc_post_options, vidproc::PostOptions>(random);
    } else {
      RunStream<vidproc_pre_options, vidproc::PreOptions>(random);
    }
    if (HasFatalFailure()) return;
  }
}

RUN_AT_EVERY_LEVEL(PipelineModelTest);

}  // namespace
