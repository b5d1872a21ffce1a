// Frames of a later set-up that fill the buffers of the first one to the last byte: kernels must neither refuse them
// nor reach past the end. Heap overruns show in the sanitized build.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <vector>

#include "kernel_harness.h"
#include "vidproc/video_processor.h"

namespace {

class BufferLimits : public testing::TestWithParam<vidproc::Level> {
 protected:
  void SetUp() override { ASSERT_EQ(vidproc::CapLevel(GetParam()), GetParam()); }
  void TearDown() override { vidproc::CapLevel(vidproc::BestLevel()); }
};

// 16 x 16 pixels make a smoothing buffer of 4 * 32 * 16 = 2048 bytes: 128 rows of 8 pixels, exactly.
TEST_P(BufferLimits, NarrowTallFramesFillTheSmoothingBuffer) {
  VideoProcessor p(1, 0);
  p.windowKind = 2;
  const auto setUp = [&p](unsigned width, unsigned height) {
    p.inWidth = p.outWidth = width;
    p.inHeight = p.outHeight = height;
    p.inStride = p.outStride = 2 * width;
    p.SetEnhanceFilter(EnhanceLaplacian4, 0, 7, 128, 0);
  };
  setUp(16, 16);
  p.SetUseSpatialMotionSmoothing(1);
  setUp(8, 128);
  p.SetAdaptive(2);
  p.ditherLevel = 0;
  std::vector<unsigned char> source(16 * 128, 90);
  std::vector<unsigned char> destination(source.size(), 1);
  for (int frame = 0; frame < 2; ++frame) {
    p.srcFrame = source.data();
    p.dstFrame = destination.data();
    p.PreProcAdaptiveMotionSmoothingExecute();
    EXPECT_EQ(destination, source) << "frame " << frame;
  }
}

// The buffers of 16 x 16 pixels can hold a copy of 16 x 300, but not what scaling such a frame would need.
TEST_P(BufferLimits, PassesTallNarrowFramesThroughInPlace) {
  void* handle = nullptr;
  for (const unsigned height : {16u, 300u})
    ASSERT_EQ(PostProcInit(&handle, 16, height, 32, 16, height, 32, 0, 0, 0), 1);
  std::vector<unsigned char> frame(32 * 301);
  for (std::size_t i = 0; i < frame.size(); ++i) frame[i] = static_cast<unsigned char>(i * 7 + i / 32);
  std::vector<unsigned char> expected = frame;
  std::copy_n(frame.begin(), 32 * 300, expected.begin() + 32);
  PostProcExecute(handle, frame.data(), frame.data() + 32, 0, 64, 0);
  EXPECT_EQ(frame, expected);
  std::free(static_cast<VideoProcessor*>(handle)->ditherTable);
  PostProcCleanup(&handle);
}

INSTANTIATE_TEST_SUITE_P(Levels, BufferLimits, testing::ValuesIn(testing_support::AvailableLevels()),
                         [](const auto& info) { return vidproc::LevelName(info.param); });

}  // namespace
