// Fields that an embedding program writes between set-up and a frame: what does not fit is refused before anything is
// read or written, and what just fits is processed.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <utility>
#include <vector>

#include "support/kernel_harness.h"

namespace {

using namespace testing_support;
using Bytes = std::vector<std::uint8_t>;

Processor SetUpFor(bool preProcessor, const Geometry& g) {
  Processor p(new VideoProcessor(preProcessor, 0));
  p->inWidth = static_cast<std::uint32_t>(g.inWidth);
  p->inHeight = static_cast<std::uint32_t>(g.inHeight);
  p->outWidth = static_cast<std::uint32_t>(g.outWidth);
  p->outHeight = static_cast<std::uint32_t>(g.outHeight);
  p->inStride = static_cast<std::uint32_t>(2 * g.inWidth + g.inPadding);
  p->outStride = static_cast<std::uint32_t>(2 * g.outWidth + g.outPadding);
  p->windowKind = 2;
  p->SetEnhanceFilter(EnhanceLaplacian4, 0, preProcessor ? 7 : 6, 64, 0);
  p->ditherLevel = 0;
  return p;
}

Bytes NumberedBytes(std::size_t count) {
  Bytes bytes(count);
  for (std::size_t i = 0; i < count; ++i) bytes[i] = static_cast<std::uint8_t>(i * 7 + i / 32);
  return bytes;
}

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
      const Processor p = SetUpFor(true, {32, 16, 16, 8});
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
    const Processor p = SetUpFor(false, {32, 16, 32, 16});
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

// 16 x 16 pixels make scratch buffers of 12288 bytes, in which frames of 16 x 300 pixels do not fit.
TEST(FramesThatDoNotFit, AreNotDeblocked) {
  const Processor p = SetUpFor(false, {16, 16, 16, 16});
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
  const Processor p = SetUpFor(false, {16, 16, 16, 16});
  p->inHeight = p->outHeight = kHeight;
  Bytes frame = NumberedBytes(32 * (kHeight + 1));
  Bytes expected = frame;
  for (std::size_t row = 1; row <= kHeight; ++row) std::copy_n(frame.data(), 32, expected.data() + 32 * row);
  p->Go(frame.data(), frame.data() + 32, 0);
  EXPECT_EQ(frame, expected) << "row by row, each from the one before";
}

// A previous frame that was taken by a later set-up than the scratch buffers can be the larger one.
TEST(FramesThatDoNotFit, AreNotStagedByTheTemporalFilter) {
  const Processor p = SetUpFor(true, {16, 16, 16, 16});
  std::free(p->previousFrame);
  p->previousFrame = nullptr;
  for (const int padding : {0, 4}) {
    for (const int height : {96, 97}) {
      p->inWidth = p->outWidth = 64;
      p->inHeight = p->outHeight = static_cast<std::uint32_t>(height);
      p->inStride = 128;
      p->outStride = static_cast<std::uint32_t>(128 + padding);
      p->SetEnhanceFilter(EnhanceLaplacian4, 0, 7, 64, 0);
      MakesFrame(*p, &VideoProcessor::PreProcTemporalExecute);  // the first frame into padded rows shows nothing
      EXPECT_EQ(MakesFrame(*p, &VideoProcessor::PreProcTemporalExecute), padding == 0 || height == 96) << height;
    }
  }
}

TEST(Overlaps, InAScratchBufferAreCopiedToTheOther) {
  constexpr std::size_t kRows = 80, kRowBytes = 192;  // more than a strip, in rows that are read where they are
  for (const bool inScratchA : {true, false}) {
    const Processor p = SetUpFor(true, {96, 80, 96, 80});
    auto* const scratch = reinterpret_cast<std::uint8_t*>(inScratchA ? p->scratchA : p->scratchB);
    const Bytes picture = NumberedBytes(kRows * kRowBytes);
    std::copy(picture.begin(), picture.end(), scratch);
    p->Go(scratch, scratch + kRowBytes, 1);
    EXPECT_EQ(Bytes(scratch + kRowBytes, scratch + (kRows + 1) * kRowBytes), picture) << inScratchA;
  }
}

TEST(Noise, NeedsATable) {
  for (const auto kernel : {&VideoProcessor::PreProcExecute, &VideoProcessor::PostProcExecute}) {
    const Processor p = SetUpFor(false, {32, 16, 32, 16});
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

void CopySizes(const VideoProcessor& from, VideoProcessor& to) {
  to.inWidth = from.inWidth;
  to.inHeight = from.inHeight;
  to.inStride = from.inStride;
  to.outWidth = from.outWidth;
  to.outHeight = from.outHeight;
  to.outStride = from.outStride;
}

Bytes ScaleNumbers(VideoProcessor& p) {
  Bytes source = NumberedBytes(std::size_t{p.inStride} * p.inHeight);
  Bytes destination(std::size_t{p.outStride} * p.outHeight);
  p.Go(source.data(), destination.data(), 1);
  return destination;
}

/// What an object that has run no frame before makes of the same fields.
Bytes ScaleNumbersAfresh(const VideoProcessor& p) {
  Processor fresh(new VideoProcessor(1, 0));
  CopySizes(p, *fresh);
  fresh->windowKind = 2;
  fresh->SetEnhanceFilter(EnhanceLaplacian4, 0, 7, 64, 0);
  fresh->ditherLevel = 0;
  std::copy_n(&p.horizontalFilterLanes[0][0][0], 16 * 16 * 8, &fresh->horizontalFilterLanes[0][0][0]);
  std::copy_n(&p.verticalFilterLanes[0][0][0], 16 * 16 * 8, &fresh->verticalFilterLanes[0][0][0]);
  return ScaleNumbers(*fresh);
}

// What an object keeps from frame to frame must never show.
TEST(PlansInTurn, FollowTheSetUp) {
  // A long stride makes buffers that hold all these frames.
  const Processor p = SetUpFor(true, {16, 160, 16, 160, 1000, 0});
  const Processor small = SetUpFor(true, {64, 48, 96, 24}), large = SetUpFor(true, {160, 128, 150, 128});
  for (const Processor* sizes : {&small, &large, &small}) {
    CopySizes(*small, *p);
    p->SetEnhanceFilter(EnhanceLaplacian4, 0, 7, 64, 0);
    EXPECT_EQ(ScaleNumbers(*p), ScaleNumbersAfresh(*p));
    CopySizes(**sizes, *p);
    p->SetEnhanceFilter(EnhanceLaplacian4, 0, 7, 64, 0);  // takes new memory, and no frame comes
  }
}

TEST(PlansInTurn, FollowEachBank) {
  const Processor p = SetUpFor(true, {64, 48, 96, 24});
  EXPECT_EQ(ScaleNumbers(*p), ScaleNumbersAfresh(*p));
  for (auto* const lanes : {&p->horizontalFilterLanes, &p->verticalFilterLanes}) {
    for (const short changed : {short{10}, short{300}, short{20}, short{300}, short{0}}) {
      for (auto& phase : *lanes) std::fill_n(phase[2], 8, changed);
      EXPECT_EQ(ScaleNumbers(*p), ScaleNumbersAfresh(*p)) << changed;
    }
  }
}

}  // namespace
