// The exposure watcher behind the checked interface: for every format, stride and width it reports what the watcher of
// packed frames reports for the same luma.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <vector>

#include "support/api_frames.h"
#include "support/failing_malloc.h"
#include "support/frame_content.h"
#include "vidproc/video_processor.h"
#include "vidproc/vidproc.hpp"

namespace {

using namespace testing_support;

constexpr int kHeight = 49;

/// Luma of a stream that settles, drifts and settles again, with something moving in it.
std::vector<std::uint8_t> DrawLuma(int width, int frame, Random& random) {
  std::vector<std::uint8_t> luma(static_cast<std::size_t>(width) * kHeight);
  const int level = frame < 45 ? 80 : 140;
  for (std::size_t i = 0; i < luma.size(); ++i) {
    luma[i] = static_cast<std::uint8_t>(level + static_cast<int>(i * i % 53) + random.Between(-2, 2));
  }
  return luma;
}

/// Puts luma into a frame, and noise into everything else.
void PutLuma(const std::vector<std::uint8_t>& luma, const vidproc_output& frame, Random& random) {
  const bool isPacked = frame.format == VIDPROC_FORMAT_UYVY || frame.format == VIDPROC_FORMAT_YUYV;
  const std::ptrdiff_t first = frame.format == VIDPROC_FORMAT_UYVY ? 1 : 0, step = isPacked ? 2 : 1;
  for (int y = 0; y < frame.height; ++y) {
    std::uint8_t* row = frame.plane[0] + y * frame.stride[0];
    for (int x = 0; x < frame.width; ++x) {
      if (isPacked) row[2 * x + 1 - first] = random.Byte();
      row[step * x + first] = luma[static_cast<std::size_t>(y * frame.width + x)];
    }
  }
}

/// Bottom-up, with three bytes between the rows.
vidproc_output UpsideDown(const vidproc_frame_info& info, std::vector<std::uint8_t>& memory) {
  vidproc_output frame = vidproc::OutputOver(info, memory);
  memory.resize(memory.size() + 3 * 3 * std::size_t{kHeight});
  std::uint8_t* start = memory.data();
  for (int p = 0; p < 3 && frame.plane[p] != nullptr; ++p) {
    const std::size_t rows = frame.bytes[p] / static_cast<std::size_t>(frame.stride[p]);
    frame.stride[p] += 3;
    frame.bytes[p] += 3 * rows;
    frame.plane[p] = start + (rows - 1) * static_cast<std::size_t>(frame.stride[p]);
    frame.stride[p] = -frame.stride[p];
    start += frame.bytes[p];
  }
  return frame;
}

vidproc_input ReadOf(const vidproc_output& f) {
  return {f.format,
          f.width,
          f.height,
          {f.plane[0], f.plane[1], f.plane[2]},
          {f.stride[0], f.stride[1], f.stride[2]},
          {f.bytes[0], f.bytes[1], f.bytes[2]}};
}

void ExpectEvents(vidproc_format format, int width, bool isUpsideDown) {
  vidproc::ExposureOptions options;
  options.input = {format, width, kHeight, VIDPROC_SITING_LEFT};
  vidproc::Exposure exposure(options);
  std::vector<std::uint8_t> memory(vidproc::FrameBytes(options.input));
  const vidproc_output frame =
      isUpsideDown ? UpsideDown(options.input, memory) : vidproc::OutputOver(options.input, memory);
  std::vector<std::uint8_t> packed(2 * static_cast<std::size_t>(width) * kHeight);
  const vidproc_output plain = {VIDPROC_FORMAT_UYVY, width, kHeight, {packed.data()}, {2 * width}, {packed.size()}};
  void* watcher = nullptr;
  int drifts = 0;
  for (int repetition = 0; repetition < 2; ++repetition) {
    VidProcAdjustAutoExposureInit(&watcher, width, kHeight, 0);
    Random random(static_cast<std::uint32_t>(width));
    for (int n = 0; n < 90; ++n) {
      const std::vector<std::uint8_t> luma = DrawLuma(width, n, random);
      PutLuma(luma, frame, random);
      PutLuma(luma, plain, random);
      const int expected = VidProcAdjustAutoExposure(watcher, packed.data());
      const vidproc_exposure_event event = exposure.Process(ReadOf(frame));
      ASSERT_EQ(event, expected == 1   ? VIDPROC_EXPOSURE_DRIFTED
                       : expected == 0 ? VIDPROC_EXPOSURE_SETTLED
                                       : VIDPROC_EXPOSURE_NONE)
          << "format " << format << " width " << width << " frame " << n << " repetition " << repetition;
      drifts += event == VIDPROC_EXPOSURE_DRIFTED;
    }
    VidProcAdjustAutoExposureCleanup(&watcher);
    exposure.Reset();
  }
  EXPECT_EQ(drifts, 2);
}

TEST(ExposureWatch, SeesTheLumaOfEveryFormat) {
  for (const vidproc_format format : kFormats) {
    for (const int width : {64, 81}) {
      ExpectEvents(format, width, false);
      ExpectEvents(format, width, true);
    }
  }
}

TEST(ExposureWatch, KeepsItsSettingsWhenMemoryIsOut) {
  vidproc::ExposureOptions options;
  options.input = {VIDPROC_FORMAT_NV12, 32, 32, VIDPROC_SITING_LEFT};
  vidproc::Exposure exposure(options);
  const TightFrame frame(options.input, 90);
  options.input.width = 48;
  {
    const FailingMalloc failing(2);
    EXPECT_EQ(vidproc_exposure_configure(exposure.Get(), &options), VIDPROC_ERROR_OUT_OF_MEMORY);
  }
  EXPECT_STREQ(vidproc_exposure_last_error(exposure.Get()), "out of memory for these frames and settings");
  EXPECT_EQ(exposure.Process(frame.Read()), VIDPROC_EXPOSURE_NONE);
  const vidproc_input input = frame.Read();
  EXPECT_EQ(vidproc_exposure_process(exposure.Get(), &input, nullptr), VIDPROC_ERROR_INVALID_ARGUMENT);
  EXPECT_STREQ(vidproc_exposure_last_error(exposure.Get()), "event is null, allowed is a place for it");
}

}  // namespace
