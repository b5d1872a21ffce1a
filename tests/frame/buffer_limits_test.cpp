// Frames of a later set-up that fill the buffers of the first one to the last byte: kernels must neither refuse them
// nor reach past the end, and must refuse the next larger ones. Heap overruns show in the sanitized build.
#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "frame/frame_checks.h"
#include "support/kernel_harness.h"
#include "vidproc/video_processor.h"

namespace {

using testing_support::Geometry;

using BufferLimits = testing_support::AtEveryLevel;

struct Limit {
  int (VideoProcessor::*run)();
  Geometry largest;
  int Geometry::*grows;  ///< one more of this is too much
};

// 16 x 16 pixels make scratch buffers of 12288 bytes, a history of 6144, and smoothing buffers of 2048 and 8192.
constexpr Limit kLimits[] = {
    {&VideoProcessor::PreProcExecute, {64, 88, 8, 8}, &Geometry::inHeight},
    {&VideoProcessor::PreProcExecute, {8, 8, 8, 128}, &Geometry::outHeight},
    {&VideoProcessor::PreProcExecute, {2, 8, 64, 96}, &Geometry::outHeight},
    {&VideoProcessor::PreProcAdaptive16TapExecute, {32, 8, 8, 48}, &Geometry::outHeight},
    {&VideoProcessor::PreProcAdaptiveExecute, {2, 8, 32, 96}, &Geometry::outHeight},
    {&VideoProcessor::PreProcAdaptiveMotionSmoothingExecute, {32, 32, 8, 8}, &Geometry::inHeight},
    {&VideoProcessor::PreProcAdaptiveMotionSmoothingExecute, {32, 8, 8, 32}, &Geometry::outHeight},
    {&VideoProcessor::PreProcAdaptiveMotionSmoothingExecute, {8, 8, 64, 32}, &Geometry::outHeight},
    {&VideoProcessor::PreProcAdaptiveMotionSmoothingExecute, {8, 128, 8, 128}, &Geometry::outHeight},
    {&VideoProcessor::PreProcTemporalExecute, {32, 97, 32, 96}, &Geometry::outHeight},
    {&VideoProcessor::PreProcTemporalExecute, {32, 40, 32, 40}, &Geometry::outHeight},  // the source ends
    {&VideoProcessor::PostProcExecute, {8, 8, 8, 128}, &Geometry::outHeight},
};

/// What two flat frames of 90 leave in a destination of 1, in the buffers of a set-up for 16 x 16.
std::vector<unsigned char> RunFlatFrames(int (VideoProcessor::*run)(), const Geometry& geometry) {
  testing_support::Configuration configuration{{16, 16, 16, 16}};
  configuration.use16Taps = run == &VideoProcessor::PreProcAdaptive16TapExecute;
  const auto processor = testing_support::MakeProcessor(run != &VideoProcessor::PostProcExecute, configuration);
  VideoProcessor& p = *processor;
  p.SetUseSpatialMotionSmoothing(1);
  configuration.geometry = geometry;
  SetUpProcessor(p, configuration);
  p.SetAdaptive(2);
  std::vector<unsigned char> source(std::size_t{p.inStride} * p.inHeight, 90);
  std::vector<unsigned char> destination(std::size_t{p.outStride} * p.outHeight, 1);
  for (int frame = 0; frame < 2; ++frame) {
    p.srcFrame = source.data();
    p.dstFrame = destination.data();
    (p.*run)();
  }
  return destination;
}

TEST_P(BufferLimits, FramesMayFillTheBuffersToTheLastByte) {
  for (const Limit& limit : kLimits) {
    Geometry geometry = limit.largest;
    SCOPED_TRACE(&limit - kLimits);
    const auto isMade = [](int sample) { return sample >= 88 && sample <= 90; };  // some phases sum to 127 of 128
    const auto isUntouched = [](int sample) { return sample == 1; };
    EXPECT_TRUE(std::ranges::all_of(RunFlatFrames(limit.run, geometry), isMade));
    ++(geometry.*limit.grows);
    EXPECT_TRUE(std::ranges::all_of(RunFlatFrames(limit.run, geometry), isUntouched));
  }
}

// The buffers of 16 x 16 pixels can hold a copy of 16 x 300, but not what scaling such a frame would need.
TEST_P(BufferLimits, PassesTallNarrowFramesThroughInPlace) {
  void* handle = nullptr;
  for (const unsigned height : {16u, 300u})
    ASSERT_EQ(PostProcInit(&handle, 16, height, 32, 16, height, 32, 0, 0, 0), 1);
  const testing_support::Processor owner(static_cast<VideoProcessor*>(handle));
  std::vector<unsigned char> frame = testing_support::NumberedBytes(32 * 301);
  std::vector<unsigned char> expected = frame;
  std::copy_n(frame.begin(), 32 * 300, expected.begin() + 32);
  PostProcExecute(handle, frame.data(), frame.data() + 32, 0, 64, 0);
  EXPECT_EQ(frame, expected);
}

TEST(WorkingBuffers, HoldWholePackedFramesOnly) {
  constexpr std::size_t kBytes = 2 * 16 * 16;
  const auto processor = testing_support::MakeProcessor(true, {{16, 16, 16, 16}});
  VideoProcessor& p = *processor;
  p.SetUseSpatialMotionSmoothing(1);
  const struct {
    void* start;
    std::size_t bytes;
  } kBuffers[] = {{p.scratchA, 12288},
                  {p.scratchB, 12288},
                  {p.previousFrame, 6144},
                  {p.smoothingBufferSmall, 2048},
                  {p.smoothingBufferLarge, 8192}};
  for (const auto& buffer : kBuffers) {
    void* const behind = static_cast<unsigned char*>(buffer.start) + buffer.bytes;
    EXPECT_EQ(vidproc::RoomInWorkingBuffer(p, {12288, 6144, 8192, 2048}, behind), std::nullopt);
    for (const bool reachesPast : {false, true}) {
      auto* const end = static_cast<unsigned char*>(buffer.start) + buffer.bytes;
      unsigned char* const inside = end - kBytes + (reachesPast ? 1 : 0);
      std::vector<unsigned char> frame(kBytes, 1);
      std::fill(inside, end, 90);
      p.Go(inside, frame.data(), 1);
      EXPECT_EQ(frame, std::vector<unsigned char>(kBytes, reachesPast ? 1 : 90));

      std::fill(inside, end, 1);
      frame.assign(kBytes, 90);
      p.outStride = 40;
      p.Go(frame.data(), static_cast<unsigned char*>(buffer.start), 1);
      EXPECT_NE(*static_cast<unsigned char*>(buffer.start), 90) << "rows with padding";
      p.outStride = 32;
      p.Go(frame.data(), inside, 1);
      EXPECT_EQ(std::count(inside, end, 90), reachesPast ? 0 : end - inside);

      std::fill(inside, end, 1);
      p.srcFrame = inside;
      p.Deblock8x8();
      EXPECT_EQ(std::count(inside, end, 1), reachesPast ? end - inside : 0) << "deblocking paints its pattern";
    }
  }
}

RUN_AT_EVERY_LEVEL(BufferLimits);

}  // namespace
