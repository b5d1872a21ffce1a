// The processor object: defaults, processor probe, settings, working buffers and the set-up that ties them together.
#include "vidproc/video_processor.h"

#include <algorithm>
#include <cstddef>
#include <limits>
#include <memory>
#include <new>

#include "frame/filter_setup.h"
#include "frame/frame_checks.h"
#include "frame/workspace.h"
#include "vidproc/cpu_level.h"

namespace {

constexpr std::size_t kRecordedNameLength = 250;

std::int8_t ProbeProcessor() {
#ifdef VIDPROC_HAS_sse2
  if (!vidproc::IsLevelAvailable(vidproc::Level::kSse2)) return -1;
  if (!vidproc::IsLevelAvailable(vidproc::Level::kSse41)) return 0;
#endif
  return 1;
}

/// Larger of two sizes, rounded up to whole groups of 16.
std::uint64_t LargerIn16(std::uint32_t a, std::uint32_t b) { return (std::uint64_t{std::max(a, b)} + 15) / 16 * 16; }

/// Size of a buffer of `rows` rows; working buffers end where sizes no longer fit a signed 32-bit number.
std::uint64_t BufferBytes(std::uint64_t rows, std::uint64_t rowBytes) {
  constexpr std::uint64_t kMaxBytes = std::numeric_limits<std::int32_t>::max();
  if (rowBytes != 0 && rows > kMaxBytes / rowBytes) throw std::bad_array_new_length();
  return rows * rowBytes;
}

template <typename Sample>
std::unique_ptr<Sample[]> NewZeroed(std::uint64_t bytes) {
  return std::make_unique<Sample[]>(static_cast<std::size_t>(bytes / sizeof(Sample)));
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
  delete[] scratchA;
  delete[] scratchB;
  delete[] previousFrame;
  delete[] smoothingBufferSmall;
  delete[] smoothingBufferLarge;
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
  if (enable == 0) {
    delete[] smoothingBufferSmall;
    delete[] smoothingBufferLarge;
    smoothingBufferSmall = smoothingBufferLarge = nullptr;
    if (workspace != nullptr) workspace->held.smoothingSmall = workspace->held.smoothingLarge = 0;
    return 0;
  }
  if (workspace == nullptr) workspace = new vidproc::Workspace;
  vidproc::BufferCapacities& held = workspace->held;
  const std::uint64_t rows = LargerIn16(inHeight, outHeight);
  const std::uint64_t stride = LargerIn16(inStride, outStride);
  if (smoothingBufferSmall == nullptr) {
    const std::uint64_t bytes = BufferBytes(rows, 4 * stride);
    smoothingBufferSmall = NewZeroed<std::uint8_t>(bytes).release();
    held.smoothingSmall = bytes;
  }
  if (smoothingBufferLarge == nullptr) {
    const std::uint64_t bytes = BufferBytes(rows, 16 * stride);
    smoothingBufferLarge = NewZeroed<std::uint8_t>(bytes).release();
    held.smoothingLarge = bytes;
  }
  return 0;
}

int VideoProcessor::InitLuminanceShiftTables(short gain, short offset) {
  short clampedGain = std::clamp<short>(gain, -127, 127);
  if (clampedGain == 0) clampedGain = 1;
  std::ranges::fill(lumaGain, clampedGain);
  std::ranges::fill(lumaGainInverse, static_cast<short>(4096 / clampedGain));
  std::ranges::fill(lumaOffset, std::clamp<short>(offset, -255, 255));
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
  vidproc::BufferCapacities& held = workspace->held;
  // kept: buffers that exist keep their size, however large the frames of a later set-up.
  const std::uint64_t rows = LargerIn16(inHeight, outHeight) + 32;
  const std::uint64_t rowBytes = 2 * LargerIn16(inStride, outStride) + 64;
  if (scratchA == nullptr || scratchB == nullptr) {
    const std::uint64_t bytes = BufferBytes(2 * rows, rowBytes);
    auto newA = scratchA == nullptr ? NewZeroed<std::int16_t>(bytes) : nullptr;
    auto newB = scratchB == nullptr ? NewZeroed<std::int16_t>(bytes) : nullptr;
    held.scratch = newA && newB ? bytes : std::min(held.scratch, bytes);
    if (newA) scratchA = newA.release();
    if (newB) scratchB = newB.release();
  }
  if (previousFrame == nullptr) {
    const std::uint64_t bytes = BufferBytes(rows, rowBytes);
    previousFrame = NewZeroed<std::uint8_t>(bytes).release();
    held.previousFrame = bytes;
  }
  // Frames that outgrow the buffers are accepted and never processed: they get no working memory either.
  if (vidproc::FitsScaler(*this, held, vidproc::kPlainScaler)) workspace->Reserve(vidproc::FrameSizesOf(*this));
  filtersReady = 1;
  return 0;
}
