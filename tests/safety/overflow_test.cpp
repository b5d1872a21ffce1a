// Set-ups of both interfaces with sizes at the borders of types, in every combination: each is taken or refused, and
// what is taken serves a frame of exactly its bytes. Wrapped products show in the sanitized build.
#include <gtest/gtest.h>

#include <array>
#include <new>
#include <vector>

#include "support/api_frames.h"
#include "support/kernel_harness.h"

namespace {

using namespace testing_support;

constexpr std::uint32_t kSizes[] = {1, 2, 65535, 65536, 1u << 31, 0xFFFFFFFF};
constexpr std::uint64_t kMostFrameBytes = 1 << 18;

template <std::size_t kCount, typename Take>
void ForEachCombination(const Take& take) {
  std::array<std::uint32_t, kCount> sizes = {};
  for (std::size_t combination = 0;; ++combination) {
    std::size_t rest = combination;
    for (std::uint32_t& size : sizes) {
      size = kSizes[rest % std::size(kSizes)];
      rest /= std::size(kSizes);
    }
    if (rest != 0) return;
    take(sizes);
  }
}

std::uint64_t FrameBytes(std::uint64_t width, std::uint64_t height, std::uint64_t stride) {
  return (height - 1) * stride + 2 * width;
}

bool MakesFrame(void* handle, bool isPost, std::uint64_t in, std::uint64_t out) {
  std::vector<std::uint8_t> source(in, 90), destination(out, 1);
  if (isPost) {
    PostProcExecute(handle, source.data(), destination.data(), 40, 64, 0);
  } else {
    PreProcExecute(handle, source.data(), destination.data(), 1, 0, 1, 80, 3, 64, 0);
  }
  return destination.front() != 1;
}

TEST(Overflow, LeavesTheObjectUsable) {
  int taken = 0, framesMade = 0;
  ForEachCombination<5>([&](const std::array<std::uint32_t, 5>& s) {
    const auto [inWidth, inHeight, outWidth, outHeight, stride] = s;
    for (const bool isPost : {false, true}) {
      void* handle = nullptr;
      try {
        taken += (isPost ? PostProcInit : PreProcInit)(&handle, inWidth, inHeight, stride, outWidth, outHeight, stride,
                                                       0, 0, 10);
        const std::uint64_t in = FrameBytes(inWidth, inHeight, stride), out = FrameBytes(outWidth, outHeight, stride);
        if (std::max(in, out) <= kMostFrameBytes) framesMade += MakesFrame(handle, isPost, in, out);
      } catch (const std::bad_alloc&) {
      }
      const Processor release(static_cast<VideoProcessor*>(handle));
    }
  });
  EXPECT_GT(taken, 1000);
  EXPECT_EQ(framesMade, 16) << "widths of 2, heights up to 2 and long rows";
}

TEST(Overflow, LeavesPlanesUsable) {
  ForEachCombination<4>([](const std::array<std::uint32_t, 4>& s) {
    const auto [inWidth, inHeight, outWidth, outHeight] = s;
    void* handle = nullptr;
    int isTaken = 0;
    try {
      isTaken = VidProc420InterleavedInit(&handle, inWidth, inHeight, outWidth, outHeight);
    } catch (const std::bad_alloc&) {
    }
    const Processor release(static_cast<VideoProcessor*>(handle));
    if (inWidth > 65536 || outWidth > 65536 || inHeight > 2 || outHeight > 2) return;
    ASSERT_EQ(isTaken, 1);
    std::vector<std::uint8_t> luma(std::size_t{inWidth} * inHeight, 90), chroma(inWidth, 90);
    std::vector<std::uint8_t> outLuma(std::size_t{outWidth} * outHeight, 1), outChroma(outWidth, 1);
    VidProc420InterleavedExecute(handle, luma.data(), chroma.data(), outLuma.data(), outChroma.data(), inWidth,
                                 inHeight, inWidth, inWidth, outWidth, outHeight, outWidth, outWidth, 64, 0);
    EXPECT_EQ(outLuma.front() != 1, inWidth >= 2 && outWidth >= 2) << inWidth << " to " << outWidth;
  });
}

TEST(Overflow, IsRefusedByTheCheckedInterface) {
  vidproc::Pre pre;
  vidproc::Post post;
  vidproc::Exposure exposure;
  const auto status = [](bool isAllowed) { return isAllowed ? VIDPROC_OK : VIDPROC_ERROR_INVALID_ARGUMENT; };
  ForEachCombination<4>([&](const std::array<std::uint32_t, 4>& s) {
    const auto side = [&](std::size_t i) { return static_cast<int>(s[i]); };
    const bool isAllowed = s[0] == 2 && s[1] <= 2 && s[2] == 2 && s[3] <= 2;
    const auto options = WithSizes<vidproc::PreOptions>(side(0), side(1), side(2), side(3));
    EXPECT_EQ(vidproc_pre_configure(pre.Get(), &options), status(isAllowed));
    const auto postOptions = WithSizes<vidproc::PostOptions>(side(0), side(1), side(2), side(3));
    EXPECT_EQ(vidproc_post_configure(post.Get(), &postOptions), status(isAllowed));
    EXPECT_EQ(vidproc_frame_bytes(&options.input) != 0, s[0] == 2 && s[1] <= 2);
    vidproc::ExposureOptions watched;
    watched.input = options.input;
    EXPECT_EQ(vidproc_exposure_configure(exposure.Get(), &watched), VIDPROC_ERROR_INVALID_ARGUMENT);
    void* watcher = nullptr;
    VidProcAdjustAutoExposureInit(&watcher, side(0), side(1), side(2));
    EXPECT_EQ(watcher != nullptr, side(0) > 0 && side(1) > 0 && std::uint64_t{s[0]} * s[1] < 1u << 30);
    VidProcAdjustAutoExposureCleanup(&watcher);
  });
}

}  // namespace
