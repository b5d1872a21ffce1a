// The processor object: defaults, processor probe, settings, working buffers and the set-up that ties them together.
#include "vidproc/video_processor.h"

#include <algorithm>
#include <cstddef>
#include <iterator>

#include "compiler/compiler.h"
#include "frame/filter_setup.h"
#include "frame/frame_checks.h"
#include "frame/working_buffers.h"
#include "frame/workspace.h"
#include "levels/cpu_level.h"

namespace {

constexpr std::size_t kRecordedNameLength = 250;

std::int8_t ProbeProcessor() {
  if (vidproc::kProcessor != vidproc::Processor::kX86) return 1;
  if (!vidproc::MachineHasLevel(vidproc::Level::kSse2)) return -1;
  return vidproc::MachineHasLevel(vidproc::Level::kSse41) ? 1 : 0;
}

void RecordName(char (&field)[255], const char* name) {
  if (name == nullptr) return;
  bool ended = false;
  for (std::size_t i = 0; i < kRecordedNameLength; ++i) {
    ended = ended || name[i] == '\0';
    field[i] = ended ? '\0' : name[i];
  }
}

}  // namespace

VideoProcessor::VideoProcessor(int preProcessor, int soften)
    : cpuLevel(ProbeProcessor()),
      spatialMotionSmoothing(0),
      temporalShift(3),
      temporalStrength(80),
      temporalFirstFrame(1),
      previousFrame(nullptr),
      deblockLevel(0),
      use16Taps(0),
      adaptive(0),
      scratchA(nullptr),
      scratchB(nullptr),
      smoothingBufferLarge(nullptr),
      smoothingBufferSmall(nullptr),
      lumaGain(),
      lumaGainInverse(),
      lumaOffset(),
      debugPrint(0),
      softenLevel(static_cast<std::uint32_t>(soften)),
      ditherLevel(9),
      ditherTable(nullptr),
      horizontalFilter(),
      verticalFilter(),
      horizontalEnhancedFilter(),
      verticalEnhancedFilter(),
      horizontalFilterLanes(),
      verticalFilterLanes(),
      deblockHorizontalFilter(),
      deblockVerticalFilter(),
      deblockHorizontalFilterLanes(),
      deblockVerticalFilterLanes(),
      horizontalUp(0),
      horizontalDown(0),
      verticalUp(0),
      verticalDown(0),
      inStride(1280),
      outStride(1280),
      filtersReady(0),
      srcFrame(nullptr),
      dstFrame(nullptr),
      reservedByte(0),
      inFileName(),
      outFileName(),
      optionFlag0(1),
      optionFlag1(1),
      enhanceHorizontal(1),
      enhanceVertical(1),
      inWidth(640),
      inHeight(480),
      outWidth(640),
      outHeight(480),
      windowKind(0),
      lanczosLobes(2),
      enhanceKernel{{0, -1, 0}, {-1, 20, -1}, {0, -1, 0}},
      enhanceType(EnhanceLaplacian4),
      enhanceStrength(1),
      optionValue(1),
      isPreProcessor(static_cast<std::uint8_t>(preProcessor)),
      ditherSeed(-1),
      deblockTestPattern(1),
      workspace(nullptr) {}

// kept: ditherTable is not released.
VideoProcessor::~VideoProcessor() {
  vidproc::ReleaseAllBuffers(*this);
  delete workspace;
}

unsigned char VideoProcessor::IsCompatibleProcessor() { return static_cast<unsigned char>(ProbeProcessor()); }

int VideoProcessor::NeedsInit(unsigned int newInWidth, unsigned int newInHeight, unsigned int newInStride,
                              unsigned int newOutWidth, unsigned int newOutHeight, unsigned int newOutStride,
                              unsigned int newEnhanceStrength, unsigned int newSoftenLevel) {
  return newInWidth != inWidth || newInHeight != inHeight || newInStride != inStride || newOutWidth != outWidth ||
         newOutHeight != outHeight || newOutStride != outStride || newEnhanceStrength != enhanceStrength ||
         newSoftenLevel != softenLevel;
}

int VideoProcessor::SetAdaptive(unsigned char level) {
  adaptive = level;
  return 0;
}

int VideoProcessor::SetTemporalFilter(unsigned char strength, unsigned char shift) {
  temporalStrength = std::min<std::uint8_t>(strength, 127);
  temporalShift = std::min<std::uint8_t>(shift, 8);
  return 0;
}

int VideoProcessor::SetTaps(unsigned char use16) {
  use16Taps = use16;
  return 0;
}

unsigned char VideoProcessor::GetTaps() { return use16Taps; }

int VideoProcessor::SetUseSpatialMotionSmoothing(unsigned char enable) {
  spatialMotionSmoothing = enable;
  if (enable != 0) {
    if (workspace == nullptr) workspace = new vidproc::Workspace;
    vidproc::TakeSmoothingBuffers(*this, workspace->held);
    return 0;
  }
  vidproc::ReleaseSmoothingBuffers(*this);
  if (workspace != nullptr) workspace->held.smoothingSmall = workspace->held.smoothingLarge = 0;
  return 0;
}

int VideoProcessor::InitLuminanceShiftTables(short gain, short offset) {
  short clampedGain = std::clamp<short>(gain, -127, 127);
  if (clampedGain == 0) clampedGain = 1;
  std::fill(std::begin(lumaGain), std::end(lumaGain), clampedGain);
  std::fill(std::begin(lumaGainInverse), std::end(lumaGainInverse), static_cast<short>(4096 / clampedGain));
  std::fill(std::begin(lumaOffset), std::end(lumaOffset), std::clamp<short>(offset, -255, 255));
  return 0;
}

int VideoProcessor::SetDeblockTestPattern(unsigned char enable) {
  deblockTestPattern = enable;
  return 0;
}

int VideoProcessor::PrintFilters(unsigned int enable) {
  debugPrint = enable;
  return 0;
}

int VideoProcessor::AddCustomFilter(unsigned int**, unsigned int) { return 0; }

int VideoProcessor::SharpScale(unsigned char*, unsigned char*) { return 0; }

int VideoProcessor::SetFiles(char* inName, char* outName) {
  RecordName(inFileName, inName);
  RecordName(outFileName, outName);
  return 0;
}

int VideoProcessor::SetEnhanceFilter(EnhanceFilterTypes type, unsigned int strength, unsigned int precisionBits,
                                     short gain, short offset) {
  vidproc::SetUpFilters(*this, type, strength, precisionBits);
  if (ditherTable == nullptr) PostProcDitherNoiseLUTCreation(&ditherTable);
  InitLuminanceShiftTables(gain, offset);

  if (workspace == nullptr) workspace = new vidproc::Workspace;
  vidproc::TakeWorkingBuffers(*this, workspace->held);
  // Frames that outgrow the buffers are accepted and never processed: they get no working memory either.
  if (vidproc::FitsScaler(*this, workspace->held, vidproc::kPlainScaler))
    workspace->Reserve(vidproc::FrameSizesOf(*this));
  filtersReady = 1;
  return 0;
}
