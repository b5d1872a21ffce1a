// The processor object: defaults, probe, settings, and the buffers that follow the smoothing flag.
#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <memory>
#include <new>
#include <string>

#include "levels/cpu_level.h"
#include "support/allocation_log.h"
#include "vidproc/video_processor.h"

namespace {

using testing_support::AllocationLog;

template <typename Array>
bool AllEqual(const Array& array, int value) {
  return std::all_of(std::begin(array), std::end(array),
                     [value](auto element) { return std::int64_t{element} == value; });
}

template <typename... Field>
bool AreZero(const Field&... fields) {
  const auto isZero = [](const auto& field) {
    const auto* bytes = reinterpret_cast<const unsigned char*>(&field);
    return std::count(bytes, bytes + sizeof(field), 0) == sizeof(field);
  };
  return (isZero(fields) && ...);
}

TEST(Processor, StartsFromItsDefaultsWhateverTheMemoryHeld) {
  alignas(VideoProcessor) static unsigned char memory[sizeof(VideoProcessor)];
  std::memset(memory, 0xA5, sizeof(memory));
  auto* p = new (memory) VideoProcessor(0x101, 7);

  EXPECT_EQ(p->isPreProcessor, 1);  // the low byte
  EXPECT_EQ(p->NeedsInit(640, 480, 1280, 640, 480, 1280, 1, 7), 0);
  EXPECT_EQ(p->temporalShift, 3);
  EXPECT_EQ(p->temporalStrength, 80);
  EXPECT_EQ(p->ditherLevel, 9u);
  EXPECT_EQ(p->lanczosLobes, 2u);
  EXPECT_EQ(p->optionValue, 1u);
  EXPECT_EQ(p->ditherSeed, -1);
  const std::uint8_t onFlags[] = {p->temporalFirstFrame, p->deblockTestPattern, p->optionFlag0,
                                  p->optionFlag1,        p->enhanceHorizontal,  p->enhanceVertical};
  EXPECT_TRUE(AllEqual(onFlags, 1));
  EXPECT_TRUE(AreZero(p->spatialMotionSmoothing, p->deblockLevel, p->use16Taps, p->adaptive, p->filtersReady,
                      p->reservedByte, p->debugPrint, p->windowKind, p->enhanceType));
  EXPECT_TRUE(AreZero(p->previousFrame, p->scratchA, p->scratchB, p->smoothingBufferLarge, p->smoothingBufferSmall,
                      p->ditherTable, p->srcFrame, p->dstFrame));
  EXPECT_TRUE(AreZero(p->horizontalFilter, p->verticalFilter, p->horizontalEnhancedFilter, p->verticalEnhancedFilter));
  EXPECT_TRUE(AreZero(p->horizontalFilterLanes, p->verticalFilterLanes));
  EXPECT_TRUE(AreZero(p->deblockHorizontalFilter, p->deblockVerticalFilter));
  EXPECT_TRUE(AreZero(p->deblockHorizontalFilterLanes, p->deblockVerticalFilterLanes));
  EXPECT_TRUE(AreZero(p->lumaGain, p->lumaGainInverse, p->lumaOffset, p->inFileName, p->outFileName));
  EXPECT_TRUE(AreZero(p->horizontalUp, p->horizontalDown, p->verticalUp, p->verticalDown));
  const std::int16_t kernel[3][3] = {{0, -1, 0}, {-1, 20, -1}, {0, -1, 0}};
  EXPECT_EQ(std::memcmp(p->enhanceKernel, kernel, sizeof(kernel)), 0);
  std::destroy_at(p);
}

TEST(Processor, TakesNoMemoryBeforeSetUp) {
  const AllocationLog log;
  { const VideoProcessor processor(1, 0); }
  EXPECT_EQ(log.Total(), 0u);
}

TEST(Processor, ProbesTheMachine) {
  VideoProcessor processor(1, 0);
  EXPECT_EQ(processor.IsCompatibleProcessor(), static_cast<unsigned char>(processor.cpuLevel));
  if (vidproc::IsLevelAvailable(vidproc::Level::kSse41) || vidproc::IsLevelAvailable(vidproc::Level::kNeon)) {
    EXPECT_EQ(processor.cpuLevel, 1);
  }
  processor.cpuLevel = -1;
  EXPECT_NE(processor.IsCompatibleProcessor(), 255) << "the probe reads no field";
}

TEST(Processor, NeedsInitComparesEachOfItsEightValues) {
  for (int changed = -1; changed < 8; ++changed) {
    unsigned v[8] = {640, 480, 1280, 640, 480, 1280, 1, 2};
    if (changed >= 0) v[changed] += 1;
    VideoProcessor processor(1, 2);
    EXPECT_EQ(processor.NeedsInit(v[0], v[1], v[2], v[3], v[4], v[5], v[6], v[7]), changed >= 0 ? 1 : 0) << changed;
  }
}

TEST(Processor, ClampsTemporalSettings) {
  VideoProcessor processor(1, 0);
  EXPECT_EQ(processor.SetTemporalFilter(128, 9), 0);
  EXPECT_EQ(processor.temporalStrength, 127);
  EXPECT_EQ(processor.temporalShift, 8);
}

TEST(Processor, LuminanceVectors) {
  const struct {
    short gain, offset;
    int expectedGain, expectedInverse, expectedOffset;
  } kCases[] = {{0, 0, 1, 4096, 0},       {-300, -300, -127, -32, -255}, {128, 256, 127, 32, 255},
                {3, -255, 3, 1365, -255}, {-1, 17, -1, -4096, 17},       {SHRT_MIN, SHRT_MAX, -127, -32, 255}};
  VideoProcessor direct(1, 0);
  VideoProcessor configured(1, 0);
  for (const auto& c : kCases) {
    EXPECT_EQ(direct.InitLuminanceShiftTables(c.gain, c.offset), 0);
    EXPECT_EQ(configured.SetEnhanceFilter(EnhanceLaplacian4, 0, 7, c.gain, c.offset), 0);
    for (const VideoProcessor* p : {&direct, &configured}) {
      EXPECT_TRUE(AllEqual(p->lumaGain, c.expectedGain)) << c.gain;
      EXPECT_TRUE(AllEqual(p->lumaGainInverse, c.expectedInverse)) << c.gain;
      EXPECT_TRUE(AllEqual(p->lumaOffset, c.expectedOffset)) << c.offset;
    }
  }
  std::free(configured.ditherTable);
}

TEST(Processor, RecordsAtMost250CharactersOfAName) {
  VideoProcessor processor(1, 0);
  std::memset(processor.inFileName, '#', sizeof(processor.inFileName));
  std::memset(processor.outFileName, '#', sizeof(processor.outFileName));
  std::string longName(300, 'n');
  std::string shortName = "camera.yuv";
  EXPECT_EQ(processor.SetFiles(longName.data(), shortName.data()), 0);
  EXPECT_EQ(std::string(processor.inFileName, 255), std::string(250, 'n') + "#####");
  EXPECT_EQ(std::string(processor.outFileName, 255), shortName + std::string(240, '\0') + "#####");

  processor.SetFiles(nullptr, nullptr);
  EXPECT_EQ(processor.inFileName[0], 'n') << "a missing name leaves the last one";
}

// --- The smoothing buffers: 4 and 16 times the larger stride times the larger height, both rounded up to 16. ---

constexpr std::size_t kSmoothingArea = std::size_t{1296} * 496;

struct SmoothingSetUp : VideoProcessor {
  SmoothingSetUp() : VideoProcessor(1, 0) {
    inStride = 1282;
    outHeight = 481;
  }
};

TEST(Smoothing, BuffersComeAndGoWithTheFlag) {
  SmoothingSetUp p;
  for (int round = 0; round < 2; ++round) {
    const AllocationLog log;
    EXPECT_EQ(p.SetUseSpatialMotionSmoothing(3), 0);
    const std::uint8_t* const small = p.smoothingBufferSmall;
    const std::uint8_t* const large = p.smoothingBufferLarge;
    EXPECT_EQ(log.Only(4 * kSmoothingArea), small);
    EXPECT_EQ(log.Only(16 * kSmoothingArea), large);
    p.SetUseSpatialMotionSmoothing(1);
    EXPECT_EQ(p.smoothingBufferSmall, small);
    EXPECT_EQ(p.smoothingBufferLarge, large);
    const auto isZero = [](std::uint8_t byte) { return byte == 0; };
    EXPECT_TRUE(std::all_of(small, small + 4 * kSmoothingArea, isZero));
    EXPECT_TRUE(std::all_of(large, large + 16 * kSmoothingArea, isZero));
    EXPECT_EQ(p.SetUseSpatialMotionSmoothing(0), 0);
    EXPECT_TRUE(AreZero(p.spatialMotionSmoothing, p.smoothingBufferSmall, p.smoothingBufferLarge));
  }
}

TEST(Smoothing, SurvivesAFailedAllocation) {
  for (const std::size_t failing : {0u, 1u, 2u}) {
    SmoothingSetUp p;
    {
      const AllocationLog log({failing});
      EXPECT_THROW(p.SetUseSpatialMotionSmoothing(1), std::bad_alloc);
    }
    EXPECT_EQ(p.smoothingBufferSmall != nullptr, failing == 2);
    EXPECT_EQ(p.smoothingBufferLarge, nullptr);
    p.SetUseSpatialMotionSmoothing(1);
    EXPECT_NE(p.smoothingBufferSmall, nullptr);
    EXPECT_NE(p.smoothingBufferLarge, nullptr);
  }
}

TEST(Smoothing, RefusesBuffersBeyond31Bits) {
  const struct {
    std::uint32_t stride, height;
  } kTooLarge[] = {{16384, 8192}, {UINT_MAX, 16}, {16, UINT_MAX}, {UINT_MAX, UINT_MAX}, {1u << 31, 1u << 31}};
  for (const auto& size : kTooLarge) {
    VideoProcessor p(1, 0);
    p.outStride = size.stride;
    p.inHeight = size.height;
    EXPECT_THROW(p.SetUseSpatialMotionSmoothing(1), std::bad_alloc) << size.stride << " x " << size.height;
    EXPECT_EQ(p.smoothingBufferLarge, nullptr);
  }
}

}  // namespace
