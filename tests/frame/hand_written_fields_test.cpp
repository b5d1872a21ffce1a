// Fields that an embedding program writes between set-up and a frame: what does not fit is refused before anything is
// read or written, and what just fits is processed.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <utility>
#include <vector>

#include "frame/frame_checks.h"
#include "support/allocation_log.h"
#include "support/kernel_harness.h"

namespace {

using namespace testing_support;
using Bytes = std::vector<std::uint8_t>;

constexpr std::int16_t* VideoProcessor::*kNoScratch = nullptr;

/// Whether a frame of 90 in guarded memory leaves its mark in the destination.
bool MakesFrame(VideoProcessor& p, int (VideoProcessor::*kernel)()) {
  Random random(1);
  GuardedMemory source(std::size_t{p.inStride} * p.inHeight, Flush::kEnd, random);
  std::fill_n(source.Live(), std::size_t{p.inStride} * p.inHeight, std::uint8_t{90});
  Bytes destination(std::size_t{p.outStride} * p.outHeight, 1);
  p.srcFrame = source.Live();
  p.dstFrame = destination.data();
  (p.*kernel)();
  return std::ranges::any_of(destination, [](int sample) { return sample != 1; });
}

struct RatioCase {
  std::int32_t VideoProcessor::*up;
  std::int32_t VideoProcessor::*down;
  std::int32_t upValue, downValue;
  bool isProcessed;
};

TEST(HandWrittenRatios, MayReachTheLastSampleAndNoFurther) {
  constexpr auto kUp = &VideoProcessor::horizontalUp, kDown = &VideoProcessor::horizontalDown;
  constexpr auto kRowsUp = &VideoProcessor::verticalUp, kRowsDown = &VideoProcessor::verticalDown;
  constexpr RatioCase kCases[] = {
      {kUp, kDown, 15, 31, true},  // output 15 of 16 on sample 31 of 32
      {kUp, kDown, 15, 32, false},        {kUp, kDown, 0, 1, false},         {kUp, kDown, 1, 0, false},
      {kUp, kDown, -1, -2, false},        {kUp, kDown, -1, 2, false},        {kRowsUp, kRowsDown, 7, 15, true},
      {kRowsUp, kRowsDown, 7, 16, false}, {kRowsUp, kRowsDown, 0, 1, false}, {kRowsUp, kRowsDown, 1, 0, false},
      {kRowsUp, kRowsDown, 1, -1, false}, {kUp, kDown, 2147483647, 2, true},
  };
  for (const RatioCase& c : kCases) {
    for (const auto kernel : {&VideoProcessor::PreProcExecute, &VideoProcessor::PostProcExecute}) {
      const Processor p = MakeProcessor(true, {{32, 16, 16, 8}});
      (*p).*c.up = c.upValue;
      (*p).*c.down = c.downValue;
      EXPECT_EQ(MakesFrame(*p, kernel), c.isProcessed) << &c - kCases;
    }
  }
}

TEST(HandWrittenRatios, HoldForDeblocking) {
  const struct {
    std::int32_t up, down, rowsUp;
    bool isProcessed;
  } kCases[] = {{31, 31, 1, true}, {31, 32, 1, false}, {0, 1, 1, false}, {1, 0, 1, false}, {1, 1, 0, true}};
  for (const auto& c : kCases) {
    const Processor p = MakeProcessor(false, {{32, 16, 32, 16}});
    p->InitDeblocker(30);
    p->horizontalUp = c.up;
    p->horizontalDown = c.down;
    p->verticalUp = c.rowsUp;
    Bytes frame(2 * 32 * 16, 1);
    p->srcFrame = frame.data();
    p->Deblock8x8();
    EXPECT_EQ(frame != Bytes(frame.size(), 1), c.isProcessed) << c.up << ":" << c.down;
  }
}

TEST(FieldsThatNoFrameFits, AreRefusedByEveryKernel) {
  constexpr struct {
    const char* name;
    void (*spoil)(VideoProcessor&);
  } kCases[] = {
      {"no source", [](VideoProcessor& p) { p.srcFrame = nullptr; }},
      {"no destination", [](VideoProcessor& p) { p.dstFrame = nullptr; }},
      {"one column in", [](VideoProcessor& p) { p.inWidth = 1, p.horizontalUp = 32; }},
      {"one column out", [](VideoProcessor& p) { p.outWidth = 1; }},
      {"one column", [](VideoProcessor& p) { p.inWidth = p.outWidth = 1, p.inStride = 2; }},
      {"no rows in", [](VideoProcessor& p) { p.inHeight = 0; }},
      {"no rows out", [](VideoProcessor& p) { p.outHeight = 0; }},
      {"no rows", [](VideoProcessor& p) { p.inHeight = p.outHeight = 0; }},
      {"a short stride in", [](VideoProcessor& p) { p.inStride = 63; }},
      {"a short stride out", [](VideoProcessor& p) { p.outStride = 63; }},
  };
  for (const auto& c : kCases) {
    for (const Kernel& kernel : kKernels) {
      const Processor p = MakeProcessor(kernel.family != Family::kPost, {{32, 16, 32, 16}});
      p->SetUseSpatialMotionSmoothing(1);
      p->InitDeblocker(30);
      p->ditherLevel = 20;  // a frame that is made lowers it to 12
      Bytes source(2048, 90), destination(2048, 1);
      p->srcFrame = source.data();
      p->dstFrame = destination.data();
      c.spoil(*p);
      ((*p).*kernel.run)();
      EXPECT_EQ(source, Bytes(2048, 90)) << c.name << ", " << kernel.name;
      EXPECT_EQ(destination, Bytes(2048, 1)) << c.name << ", " << kernel.name;
      EXPECT_EQ(p->ditherLevel, 20u) << c.name << ", " << kernel.name;
      EXPECT_EQ(p->temporalFirstFrame, 1) << c.name << ", " << kernel.name;
      const bool concernsTheDestinationAlone = p->dstFrame == nullptr || p->outStride == 63;
      if (!concernsTheDestinationAlone) p->Deblock8x8();
      EXPECT_EQ(source, Bytes(2048, 90)) << c.name << ", deblocking";
    }
  }
}

TEST(FieldsThatNoFrameFits, HaveSidesFrom2To30On) {
  const Processor p = MakeProcessor(true, {{32, 16, 32, 16}});
  const vidproc::BufferCapacities endless{UINT64_MAX, UINT64_MAX, UINT64_MAX, UINT64_MAX};
  for (std::uint32_t VideoProcessor::*side :
       {&VideoProcessor::inWidth, &VideoProcessor::inHeight, &VideoProcessor::outWidth, &VideoProcessor::outHeight}) {
    const std::uint32_t before = std::exchange((*p).*side, (1u << 30) - 1);
    EXPECT_TRUE(vidproc::FitsScaler(*p, endless, vidproc::kPlainScaler));
    (*p).*side = 1u << 30;
    EXPECT_FALSE(vidproc::FitsScaler(*p, endless, vidproc::kPlainScaler));
    (*p).*side = before;
  }
}

TEST(ProcessorBeforeSetUp, RunsNoKernel) {
  VideoProcessor p(1, 0);
  Bytes source(std::size_t{p.inStride} * p.inHeight, 90), destination(source.size(), 1);
  p.srcFrame = source.data();
  p.dstFrame = destination.data();
  for (const Kernel& kernel : kKernels) (p.*kernel.run)();
  p.Deblock8x8();
  std::int16_t* const scratch = reinterpret_cast<std::int16_t*>(destination.data());
  p.scratchA = p.scratchB = scratch;
  p.Go(source.data(), source.data(), destination.data(), destination.data(), 8, 8, 8, 8, 8, 8, 8, 8, 1);
  p.scratchA = p.scratchB = nullptr;
  EXPECT_EQ(source, Bytes(source.size(), 90));
  EXPECT_EQ(destination, Bytes(destination.size(), 1));
}

// The buffers of the set-up hold frames of the larger sizes; only the memory behind them has to grow.
TEST(OutOfMemory, FramesThatNeedMoreWorkingMemoryAreLeftAlone) {
  for (const auto kernel :
       {&VideoProcessor::PreProcExecute, &VideoProcessor::PostProcExecute, &VideoProcessor::Deblock8x8}) {
    const Processor p = MakeProcessor(kernel == &VideoProcessor::PreProcExecute, {{16, 16, 16, 16}});
    p->inWidth = p->outWidth = 32;
    p->inHeight = p->outHeight = 40;
    p->inStride = p->outStride = 64;
    p->InitDeblocker(30);
    Bytes frame(64 * 40, 1);
    p->srcFrame = p->dstFrame = frame.data();
    {
      const AllocationLog log({0});
      ((*p).*kernel)();
    }
    EXPECT_EQ(frame, Bytes(frame.size(), 1));
    p->ditherLevel = 12;
    ((*p).*kernel)();
    EXPECT_NE(frame, Bytes(frame.size(), 1));
  }
}

// 16 x 16 pixels make scratch buffers of 12288 bytes, in which frames of 16 x 300 pixels do not fit.
TEST(FramesThatDoNotFit, AreNotDeblocked) {
  const Processor p = MakeProcessor(false, {{16, 16, 16, 16}});
  p->InitDeblocker(30);
  p->inHeight = p->outHeight = 300;
  Bytes frame(32 * 300, 1), destination(32 * 300, 2);
  p->srcFrame = frame.data();
  p->Deblock8x8();
  EXPECT_EQ(frame, Bytes(frame.size(), 1));
  p->Go(frame.data(), destination.data(), 0);
  EXPECT_EQ(frame, Bytes(frame.size(), 1));
  EXPECT_EQ(destination, Bytes(destination.size(), 2)) << "nor passed through";
  p->deblockLevel = 20;
  p->Go(frame.data(), destination.data(), 0);
  EXPECT_EQ(destination, frame);
}

TEST(FramesThatDoNotFit, PassThroughWithoutACopy) {
  constexpr std::size_t kHeight = 2000;
  for (std::int16_t* VideoProcessor::*missing : {&VideoProcessor::scratchA, &VideoProcessor::scratchB, kNoScratch}) {
    const Processor p = MakeProcessor(false, {{16, 16, 16, 16}});
    p->inHeight = p->outHeight = missing == kNoScratch ? kHeight : 16;
    if (missing != kNoScratch) std::free(std::exchange((*p).*missing, nullptr));
    Bytes frame = NumberedBytes(32 * (kHeight + 1));
    Bytes expected = frame;
    for (std::size_t row = 1; row <= p->outHeight; ++row) std::copy_n(frame.data(), 32, expected.data() + 32 * row);
    p->Go(frame.data(), frame.data() + 32, 0);
    EXPECT_EQ(frame, expected) << "row by row, each from the one before";
  }
}

/// A previous frame that was taken by a later set-up than the scratch buffers can be the larger one.
Processor MakeLargeHistory(const Geometry& g) {
  Processor p = MakeProcessor(true, {{16, 16, 16, 16}});
  std::free(std::exchange(p->previousFrame, nullptr));
  SetUpProcessor(*p, {g});
  return p;
}

TEST(FramesThatDoNotFit, AreNotStagedByTheTemporalFilter) {
  for (const int padding : {0, 4}) {
    for (const int height : {96, 97}) {
      const Processor p = MakeLargeHistory({64, height, 64, height, 0, padding});
      MakesFrame(*p, &VideoProcessor::PreProcTemporalExecute);  // the first frame into padded rows shows nothing
      EXPECT_EQ(MakesFrame(*p, &VideoProcessor::PreProcTemporalExecute), padding == 0 || height == 96) << height;
    }
  }
}

TEST(FramesThatDoNotFit, AreNotCopiedOutOfTheTemporalFiltersWay) {
  const struct {
    int height;
    bool isFirst;
    std::int16_t* VideoProcessor::*missing;
    bool isMade;
  } kCases[] = {{96, false, kNoScratch, true},
                {97, false, kNoScratch, false},
                {97, true, kNoScratch, true},  // first frames are moved, not filtered
                {96, false, &VideoProcessor::scratchA, false},
                {96, false, &VideoProcessor::scratchB, false}};
  for (const auto& c : kCases) {
    const Processor p = MakeLargeHistory({64, c.height, 64, c.height});
    if (c.missing != kNoScratch) std::free(std::exchange((*p).*c.missing, nullptr));
    p->temporalFirstFrame = c.isFirst;
    Bytes frame = NumberedBytes(std::size_t{128} * 98);
    const Bytes before = frame;
    p->Go(frame.data(), frame.data() + 64, 0);
    EXPECT_EQ(frame != before, c.isMade) << &c - kCases;
  }
}

// Segments of more than 2048 bytes are filtered in several sweeps, so that the history changes ahead of the source.
TEST(Overlaps, WithTheHistoryAreCopied) {
  const Configuration configuration{{2, 2100, 2, 2100}};
  const Processor apart = MakeProcessor(true, configuration), inHistory = MakeProcessor(true, configuration);
  Bytes picture(8500), destinations[2] = {Bytes(8400), Bytes(8400)};
  for (std::size_t i = 0; i < picture.size(); ++i) picture[i] = static_cast<std::uint8_t>(i / 30 + i % 2);
  for (const Processor* p : {&apart, &inHistory}) {
    (*p)->SetTemporalFilter(100, 3);
    (*p)->temporalFirstFrame = 0;
    std::copy(picture.begin(), picture.end(), (*p)->previousFrame);
  }
  apart->Go(picture.data() + 100, destinations[0].data(), 0);
  inHistory->Go(inHistory->previousFrame + 100, destinations[1].data(), 0);
  EXPECT_EQ(destinations[1], destinations[0]);
}

TEST(Overlaps, InAScratchBufferAreCopiedToTheOther) {
  constexpr std::size_t kRows = 80, kRowBytes = 192;  // more than a strip, in rows that are read where they are
  for (const bool inScratchA : {true, false}) {
    const Processor p = MakeProcessor(true, {{96, 80, 96, 80}});
    auto* const scratch = reinterpret_cast<std::uint8_t*>(inScratchA ? p->scratchA : p->scratchB);
    const Bytes picture = NumberedBytes(kRows * kRowBytes);
    std::copy(picture.begin(), picture.end(), scratch);
    p->Go(scratch, scratch + kRowBytes, 1);
    EXPECT_EQ(Bytes(scratch + kRowBytes, scratch + (kRows + 1) * kRowBytes), picture) << inScratchA;
  }
}

TEST(Noise, NeedsATable) {
  for (const auto kernel : {&VideoProcessor::PreProcExecute, &VideoProcessor::PostProcExecute}) {
    const Processor p = MakeProcessor(false, {{32, 16, 32, 16}});
    std::free(std::exchange(p->ditherTable, nullptr));
    p->ditherLevel = 20;
    Bytes source = NumberedBytes(64 * 16), destination(source.size());
    p->srcFrame = source.data();
    p->dstFrame = destination.data();
    p->horizontalFilterLanes[0][3][0] = 128;
    p->verticalFilterLanes[0][1][0] = 128;
    (*p.*kernel)();
    EXPECT_EQ(destination, source);
    EXPECT_EQ(p->ditherLevel, 12u);
  }
}

Bytes ScaleNumbers(VideoProcessor& p) {
  Bytes source = NumberedBytes(std::size_t{p.inStride} * p.inHeight);
  Bytes destination(std::size_t{p.outStride} * p.outHeight);
  p.Go(source.data(), destination.data(), 1);
  return destination;
}

/// What an object that has run no frame before makes of the same banks.
Bytes ScaleNumbersAfresh(const VideoProcessor& p, const Geometry& geometry) {
  const Processor fresh = MakeProcessor(true, {geometry});
  std::copy_n(&p.horizontalFilterLanes[0][0][0], 16 * 16 * 8, &fresh->horizontalFilterLanes[0][0][0]);
  std::copy_n(&p.verticalFilterLanes[0][0][0], 16 * 16 * 8, &fresh->verticalFilterLanes[0][0][0]);
  return ScaleNumbers(*fresh);
}

// What an object keeps from frame to frame must never show.
TEST(PlansInTurn, FollowTheSetUp) {
  constexpr Geometry kSmall{64, 48, 96, 24}, kLarge{160, 128, 150, 128};
  // A long stride makes buffers that hold all these frames.
  const Processor p = MakeProcessor(true, {{16, 160, 16, 160, 1000, 0}});
  for (const Geometry& between : {kSmall, kLarge, kSmall}) {
    SetUpProcessor(*p, {kSmall});
    EXPECT_EQ(ScaleNumbers(*p), ScaleNumbersAfresh(*p, kSmall));
    SetUpProcessor(*p, {between});  // takes new memory, and no frame comes
  }
}

TEST(PlansInTurn, FollowEachBank) {
  constexpr Geometry kGeometry{64, 48, 96, 24};
  const Processor p = MakeProcessor(true, {kGeometry});
  EXPECT_EQ(ScaleNumbers(*p), ScaleNumbersAfresh(*p, kGeometry));
  for (auto* const lanes : {&p->horizontalFilterLanes, &p->verticalFilterLanes}) {
    for (const short changed : {short{10}, short{300}, short{20}, short{300}, short{0}}) {
      for (auto& phase : *lanes) std::fill_n(phase[2], 8, changed);
      EXPECT_EQ(ScaleNumbers(*p), ScaleNumbersAfresh(*p, kGeometry)) << changed;
    }
  }
}

}  // namespace
