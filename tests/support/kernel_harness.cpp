// The harness's work: settings into processors and into the reference, frames into guarded memory, and the comparison.
#include "support/kernel_harness.h"

#include <algorithm>
#include <cstring>
#include <numeric>
#include <sstream>

#include "levels/general_forms.h"
#include "reference/deblock.h"
#include "reference/temporal.h"

namespace testing_support {
namespace {

std::int16_t DrawCoefficient(BankKind kind, int precisionBits, Random& random) {
  switch (kind) {
    case BankKind::kModest:
      return static_cast<std::int16_t>(random.Between(-160, 160));
    case BankKind::kSparse:
      return static_cast<std::int16_t>(random.OneIn(4) ? 1 << precisionBits : random.OneIn(6) ? -40 : 0);
    case BankKind::kExtreme:
      return random.OneIn(3) ? random.Pick<std::int16_t>({-32768, 32767, -129, 128, 0, 255})
                             : static_cast<std::int16_t>(random.Bits());
    case BankKind::kDesigned:
      break;
  }
  return 0;
}

template <std::size_t kTaps>
void DrawBank(std::int16_t (&lanes)[16][kTaps][8], BankKind kind, int precisionBits, Random& random) {
  for (auto& phase : lanes) {
    for (auto& tap : phase) std::fill_n(tap, 8, DrawCoefficient(kind, precisionBits, random));
  }
}

}  // namespace

std::vector<vidproc::Level> AvailableLevels() {
  std::vector<vidproc::Level> levels;
  std::copy_if(std::begin(vidproc::kAllLevels), std::end(vidproc::kAllLevels), std::back_inserter(levels),
               vidproc::IsLevelAvailable);
  return levels;
}

std::vector<KernelForms> AvailableForms() {
  std::vector<KernelForms> forms;
  for (const vidproc::Level level : AvailableLevels()) {
    forms.push_back({level, false});
    if (vidproc::HasFasterForms(level)) forms.push_back({level, true});
  }
  return forms;
}

std::string KernelForms::Name() const {
  return std::string(vidproc::LevelName(level)) + (generalOnly ? ", general forms" : "");
}

FormsInUse::FormsInUse(const KernelForms& forms) {
  vidproc::CapLevel(forms.level);
  vidproc::UseGeneralFormsOnly(forms.generalOnly);
}

FormsInUse::~FormsInUse() {
  vidproc::CapLevel(vidproc::BestLevel());
  vidproc::UseGeneralFormsOnly(false);
}

/// Source and destination, apart or within one piece of memory.
struct Stream::Frames {
  Frames(const VideoProcessor& processor, const FrameSettings& settings, Random& random) {
    const std::size_t inBytes = (processor.inHeight - 1) * std::size_t{processor.inStride} + 2 * processor.inWidth;
    const std::size_t outBytes = (processor.outHeight - 1) * std::size_t{processor.outStride} + 2 * processor.outWidth;
    if (settings.overlap == Overlap::kApart) {
      source = std::make_shared<GuardedMemory>(inBytes, settings.flush, random);
      destination = std::make_shared<GuardedMemory>(outBytes, settings.flush, random);
    } else {
      const auto shift = static_cast<std::size_t>(random.Between(1, 3 * static_cast<int>(processor.outStride)));
      if (settings.overlap == Overlap::kAhead) sourceOffset = shift;
      if (settings.overlap == Overlap::kBehind) destinationOffset = shift;
      const std::size_t bytes = std::max(sourceOffset + inBytes, destinationOffset + outBytes);
      source = destination = std::make_shared<GuardedMemory>(bytes, settings.flush, random);
    }
  }

  std::string FirstDifference(const VideoProcessor& processor) const {
    const std::string difference = destination->FirstDifference(destinationOffset, processor.outStride);
    if (!difference.empty()) return "destination " + difference;
    const std::string change = source->FirstDifference(sourceOffset, processor.inStride);
    return change.empty() ? change : "source " + change;
  }

  std::shared_ptr<GuardedMemory> source;
  std::shared_ptr<GuardedMemory> destination;
  std::size_t sourceOffset = 0;
  std::size_t destinationOffset = 0;
};

Stream::Stream(bool preProcessor) : forms(AvailableForms()) {
  for (std::size_t i = 0; i < forms.size(); ++i) processors.emplace_back(new VideoProcessor(preProcessor, 0));
}

void SetRatio(std::uint32_t inSize, std::uint32_t outSize, bool crops, std::int32_t& up, std::int32_t& down) {
  const bool keepsScale = crops && outSize <= inSize;
  const auto divisor = static_cast<std::int32_t>(std::gcd(inSize, outSize));
  up = keepsScale ? 1 : static_cast<std::int32_t>(outSize) / divisor;
  down = keepsScale ? 1 : static_cast<std::int32_t>(inSize) / divisor;
}

void SetUpProcessor(VideoProcessor& p, const Configuration& configuration) {
  const Geometry& g = configuration.geometry;
  p.inWidth = static_cast<std::uint32_t>(g.inWidth);
  p.inHeight = static_cast<std::uint32_t>(g.inHeight);
  p.inStride = static_cast<std::uint32_t>(2 * g.inWidth + g.inPadding);
  p.outWidth = static_cast<std::uint32_t>(g.outWidth);
  p.outHeight = static_cast<std::uint32_t>(g.outHeight);
  p.outStride = static_cast<std::uint32_t>(2 * g.outWidth + g.outPadding);
  p.softenLevel = configuration.softenLevel;
  p.windowKind = configuration.windowKind;
  p.lanczosLobes = 3;
  p.ditherLevel = 0;
  p.SetTaps(configuration.use16Taps);
  p.SetEnhanceFilter(EnhanceLaplacian4, configuration.enhanceStrength, p.isPreProcessor != 0 ? 7 : 6, 128, 0);
}

Processor MakeProcessor(bool preProcessor, const Configuration& configuration) {
  Processor processor(new VideoProcessor(preProcessor, 0));
  SetUpProcessor(*processor, configuration);
  return processor;
}

void Stream::Configure(const Configuration& newConfiguration) {
  configuration = newConfiguration;
  for (Processor& processor : processors) {
    VideoProcessor& p = *processor;
    SetUpProcessor(p, configuration);
    if (configuration.banks != BankKind::kDesigned) {
      Random random(configuration.bankSeed);
      const int precisionBits = p.isPreProcessor != 0 ? 7 : 6;
      DrawBank(p.horizontalFilterLanes, configuration.banks, precisionBits, random);
      DrawBank(p.verticalFilterLanes, configuration.banks, precisionBits, random);
    }
  }
}

void Stream::SwitchMotionSmoothing(std::uint8_t on) {
  for (Processor& processor : processors) processor->SetUseSpatialMotionSmoothing(on);
  if (on == 0) {
    state.previousInput.clear();
    state.previousVertical.clear();
  }
}

void Stream::Apply(const FrameSettings& settings) {
  SwitchMotionSmoothing(settings.motionSmoothing);
  for (Processor& processor : processors) {
    VideoProcessor& p = *processor;
    SetRatio(p.inWidth, p.outWidth, settings.crops, p.horizontalUp, p.horizontalDown);
    SetRatio(p.inHeight, p.outHeight, settings.crops, p.verticalUp, p.verticalDown);
    p.SetAdaptive(settings.adaptive);
    p.temporalStrength = settings.temporalStrength;
    p.temporalShift = settings.temporalShift;
    std::fill_n(p.lumaGain, 8, settings.lumaGain);
    std::fill_n(p.lumaOffset, 16, settings.lumaOffset);
    p.ditherLevel = settings.ditherLevel;
    p.ditherSeed = settings.ditherSeed;
    p.InitDeblocker(settings.deblockLevel);
    p.SetDeblockTestPattern(settings.deblockTestPattern);
    if (configuration.banks != BankKind::kDesigned) {
      Random random(configuration.bankSeed);
      DrawBank(p.deblockHorizontalFilterLanes, configuration.banks, 7, random);
      DrawBank(p.deblockVerticalFilterLanes, configuration.banks, 7, random);
    }
  }
}

reference::ScalerSettings ReadSettings(const VideoProcessor& p, const Kernel& kernel) {
  reference::ScalerSettings s;
  s.inWidth = static_cast<int>(p.inWidth);
  s.inHeight = static_cast<int>(p.inHeight);
  s.outWidth = static_cast<int>(p.outWidth);
  s.outHeight = static_cast<int>(p.outHeight);
  s.inStride = p.inStride;
  s.outStride = p.outStride;
  s.horizontalUp = p.horizontalUp;
  s.horizontalDown = p.horizontalDown;
  s.verticalUp = p.verticalUp;
  s.verticalDown = p.verticalDown;
  for (int phase = 0; phase < 16; ++phase) {
    for (int tap = 0; tap < 16; ++tap) {
      s.horizontal[phase][tap] = p.horizontalFilterLanes[phase][tap][0];
      s.vertical[phase][tap] = p.verticalFilterLanes[phase][tap][0];
    }
  }
  s.horizontalTaps = kernel.horizontalTaps;
  s.verticalTaps = kernel.verticalTaps;
  s.precisionBits = kernel.family == Family::kPost ? 6 : 7;
  s.adaptiveTaps = kernel.adaptive;
  s.adaptive = p.adaptive;
  s.motionGate = kernel.motionGate;
  s.temporal = kernel.temporal;
  s.temporalStrength = p.temporalStrength;
  s.temporalShift = p.temporalShift;
  s.shiftLuma = kernel.shiftLuma;
  s.lumaGain = p.lumaGain[0];
  s.lumaOffset = p.lumaOffset[0];
  return s;
}

reference::Noise ReadNoise(const VideoProcessor& p, const Kernel& kernel) {
  const bool post = kernel.family == Family::kPost;
  reference::Noise noise;
  noise.strength = post ? std::min(static_cast<std::int32_t>(p.ditherLevel), 12)
                        : static_cast<int>(std::min(p.ditherLevel, std::uint32_t{12}));
  noise.seed = static_cast<unsigned>(p.ditherSeed);
  noise.seedTable = LFSR_SEED_TABLE;
  noise.tiles = p.ditherTable;
  noise.width = post ? p.outWidth : p.inWidth;
  noise.height = post ? p.outHeight : p.inHeight;
  noise.pitch = reference::NoisePitch(noise.width);
  return noise;
}

std::uint32_t RunReference(const VideoProcessor& p, const Kernel& kernel, reference::StreamState& state,
                           std::uint8_t* source, std::uint8_t* destination) {
  if (kernel.family == Family::kTemporal) {
    reference::RunTemporal({p.outWidth, p.outHeight, p.outStride, p.temporalStrength, p.temporalShift}, state, source,
                           destination);
    return p.ditherLevel;
  }
  const reference::ScalerSettings settings = ReadSettings(p, kernel);
  reference::Noise noise = ReadNoise(p, kernel);
  const bool sameSize = p.inWidth == p.outWidth && p.inHeight == p.outHeight;
  const bool passThrough = kernel.family == Family::kPost && sameSize && p.enhanceStrength == 0 && p.softenLevel == 0;
  const bool clampsLevel = noise.strength == 12 && (kernel.dithersResampled || passThrough);
  if (kernel.family == Family::kPost && p.deblockLevel > 20 && sameSize && p.inStride == 2 * p.inWidth) {
    reference::DeblockSettings deblock = {settings.inWidth,        settings.inHeight, settings.horizontalUp,
                                          settings.horizontalDown, p.deblockLevel,    p.deblockTestPattern != 0};
    for (int tap = 0; tap < 8; ++tap) {
      deblock.horizontal[tap] = p.deblockHorizontalFilterLanes[0][tap][0];
      deblock.vertical[tap] = p.deblockVerticalFilterLanes[0][tap][0];
    }
    reference::Deblock(deblock, source);
  }
  if (passThrough) {
    reference::RunPassThrough(settings, noise, source, destination);
  } else {
    if (!kernel.dithersResampled) noise.strength = 0;
    reference::RunScaler(settings, noise, state, source, destination);
  }
  return clampsLevel ? 12 : p.ditherLevel;
}

void Stream::CompareState(const Kernel& kernel, const VideoProcessor& processor, const std::string& where) const {
  const auto differs = [](const auto& expected, const void* actual) {
    return !expected.empty() && std::memcmp(expected.data(), actual, expected.size() * sizeof(expected[0])) != 0;
  };
  EXPECT_EQ(processor.temporalFirstFrame, state.firstFrame) << where;
  EXPECT_EQ(processor.ditherLevel, expectedDitherLevel) << where;
  EXPECT_FALSE(kernel.temporal && differs(state.history, processor.previousFrame)) << "history " << where;
  if (kernel.motionGate) {
    EXPECT_FALSE(differs(state.previousInput, processor.smoothingBufferSmall)) << "remembered input " << where;
    EXPECT_FALSE(differs(state.previousVertical, processor.smoothingBufferLarge)) << "remembered rows " << where;
  }
}

bool Stream::Run(const Kernel& kernel, const FrameSettings& settings, Random& random, const std::string& label) {
  Apply(settings);
  const Geometry& g = configuration.geometry;
  Paint(settings.content, 2 * g.inWidth, g.inHeight, random, picture);
  Frames frames(First(), settings, random);
  frames.source->PutRows(picture, 2 * First().inWidth, frames.sourceOffset, First().inStride);
  expectedDitherLevel = RunReference(First(), kernel, state, frames.source->Expected() + frames.sourceOffset,
                                     frames.destination->Expected() + frames.destinationOffset);

  std::ostringstream text;
  text << label << ", " << kernel.name << " " << g.inWidth << "x" << g.inHeight << "+" << g.inPadding << " to "
       << g.outWidth << "x" << g.outHeight << "+" << g.outPadding;
  for (std::size_t i = 0; i < forms.size(); ++i) {
    VideoProcessor& p = *processors[i];
    const std::string where = "at " + forms[i].Name() + ": " + text.str();
    const FormsInUse inUse(forms[i]);
    frames.source->Load();
    frames.destination->Load();
    p.srcFrame = frames.source->Live() + frames.sourceOffset;
    p.dstFrame = frames.destination->Live() + frames.destinationOffset;
    EXPECT_EQ((p.*kernel.run)(), 0) << where;
    const std::string difference = frames.FirstDifference(p);
    EXPECT_TRUE(difference.empty()) << difference << "\n" << where;
    CompareState(kernel, p, where);
  }
  return !::testing::Test::HasFailure();
}

FrameSettings DrawFrameSettings(const Kernel& kernel, Random& random) {
  FrameSettings s;
  s.adaptive = random.OneIn(6) ? random.Byte() : static_cast<std::uint8_t>(random.Between(0, 9));
  // Set-ups allow strengths up to 127 and shifts up to 8; hand-written fields may hold any byte.
  s.temporalStrength = random.OneIn(6) ? random.Byte() : static_cast<std::uint8_t>(random.Between(0, 127));
  s.temporalShift = random.OneIn(6) ? random.Byte() : static_cast<std::uint8_t>(random.Between(0, 8));
  s.motionSmoothing = kernel.motionGate ? 1 : 0;
  s.lumaGain = static_cast<std::int16_t>(random.Between(-127, 127));
  s.lumaOffset = static_cast<std::int16_t>(random.Between(-255, 255));
  s.ditherLevel = static_cast<std::uint32_t>(random.OneIn(3) ? random.Between(-1, 20) : 0);
  s.ditherSeed = random.OneIn(4) ? random.Between(-1000, -2) : random.Between(0, 1000);
  if (kernel.family == Family::kPost && random.OneIn(2)) {
    s.deblockLevel = random.OneIn(4) ? random.Byte() : static_cast<std::uint8_t>(random.Between(15, 70));
    s.deblockTestPattern = random.OneIn(2);
  }
  s.content = random.Pick({Content::kNoise, Content::kExtreme, Content::kSmooth, Content::kSteps, Content::kDrift,
                           Content::kDrift, Content::kStill});
  if (random.OneIn(4)) s.overlap = random.Pick({Overlap::kSame, Overlap::kAhead, Overlap::kBehind});
  s.flush = random.OneIn(3) ? Flush::kBegin : Flush::kEnd;
  s.crops = random.OneIn(6);
  return s;
}

}  // namespace testing_support
