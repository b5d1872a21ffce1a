// The watcher of packed frames with any size, and beside it the checked one with the same luma in any format: they tell
// the same.
#include "checked_frames.h"
#include "targets.h"
#include "tests/support/fast_noise.h"
#include "vidproc/video_processor.h"

namespace fuzzing {
namespace {

constexpr int kMostFrames = 120;

/// Luma that settles, drifts and moves.
void PutLuma(Input& input, const vidproc_output& frame, std::uint8_t* packed, std::uint8_t level) {
  const Samples samples = ComponentOf(frame, 0);
  const int slope = input.Between(0, 3), spread = 1 + input.Byte() % 16;
  testing_support::FastNoise noise(input.Byte());
  for (int y = 0; y < frame.height; ++y) {
    for (int x = 0; x < frame.width; ++x) {
      const auto luma = static_cast<std::uint8_t>(level + (slope * x + y) / 4 + noise.Byte() % spread);
      samples.At(x, y) = luma;
      packed[2 * (std::ptrdiff_t{y} * frame.width + x) + 1] = luma;
    }
  }
}

void WatchStream(Input& input) {
  vidproc::ExposureOptions options;
  options.input = {input.Between(VIDPROC_FORMAT_UYVY, VIDPROC_FORMAT_I422), input.Between(16, 90),
                   input.Between(16, 60), VIDPROC_SITING_LEFT};
  vidproc::Exposure checked(options);
  void* plain = nullptr;
  VidProcAdjustAutoExposureInit(&plain, options.input.width, options.input.height, 0);
  std::ptrdiff_t strides[3] = {};
  DrawStrides(options.input, input, strides);
  PlacedFrame frame(options.input, strides, kMostFrameBytes);
  Block packed(2 * static_cast<std::size_t>(options.input.width) * static_cast<std::size_t>(options.input.height));
  frame.Fill(input);
  packed.Fill(input);
  std::uint8_t level = input.Byte();
  bool agree = true;
  for (int n = 0; n < kMostFrames && !input.IsEmpty(); ++n) {
    if (input.OneIn(24)) level = input.Byte();
    if (input.OneIn(100)) {
      checked.Reset();
      VidProcAdjustAutoExposureCleanup(&plain);
      VidProcAdjustAutoExposureInit(&plain, options.input.width, options.input.height, 0);
    }
    if (n == 0 || input.OneIn(4)) PutLuma(input, frame.view, packed.Start(), level);
    const int expected = VidProcAdjustAutoExposure(plain, packed.Start());
    const vidproc_exposure_event event = checked.Process(AsInput(frame.view));
    agree = agree && event == (expected == 1   ? VIDPROC_EXPOSURE_DRIFTED
                               : expected == 0 ? VIDPROC_EXPOSURE_SETTLED
                                               : VIDPROC_EXPOSURE_NONE);
  }
  VidProcAdjustAutoExposureCleanup(&plain);
  Require(agree, "both watchers tell the same");
}

void WatchAnySize(Input& input) {
  const auto side = [&] { return input.OneIn(4) ? static_cast<int>(input.Any()) : input.Between(-1, 70); };
  const int width = side(), height = side();
  // Sizes between are left out: they would take gigabytes.
  const auto area = static_cast<double>(width) * height;
  if (area > kMostFrameBytes && area <= 0x3FFFFFFF) return;
  void* watcher = nullptr;
  VidProcAdjustAutoExposureInit(&watcher, width, height, static_cast<int>(input.Any()));
  Require((watcher != nullptr) == (width > 0 && height > 0 && area <= kMostFrameBytes), "sizes are taken or refused");
  if (watcher == nullptr) return;
  Block frame(2 * static_cast<std::size_t>(width) * static_cast<std::size_t>(height));
  for (int n = 0; n < 40 && !input.IsEmpty(); ++n) {
    if (input.OneIn(4)) frame.Fill(input);
    VidProcAdjustAutoExposure(watcher, input.OneIn(16) ? nullptr : frame.Start());
  }
  VidProcAdjustAutoExposureCleanup(&watcher);
}

}  // namespace

void FuzzExposure(Input input) { input.OneIn(3) ? WatchAnySize(input) : WatchStream(input); }

}  // namespace fuzzing
