// The life of a handle: set-up, re-set-up in place, switches that stick, clean-up, and set-ups that run out of memory.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <new>
#include <tuple>
#include <vector>

#include "support/allocation_log.h"
#include "support/resident_memory.h"
#include "vidproc/video_processor.h"

namespace {

using testing_support::AllocationLog;
using testing_support::ResidentKilobytes;

/// A handle as a host holds it.
struct Handle {
  Handle() = default;
  Handle(const Handle&) = delete;
  Handle& operator=(const Handle&) = delete;
  ~Handle() {
    // The dither table outlives its processor by design; the tests are not to pile it up.
    signed char* table = value != nullptr ? Get().ditherTable : nullptr;
    PreProcCleanup(&value);
    std::free(table);
  }
  VideoProcessor& Get() const { return *static_cast<VideoProcessor*>(value); }
  VideoProcessor* operator->() const { return &Get(); }

  void* value = nullptr;
};

constexpr unsigned kWidth = 64;
constexpr unsigned kHeight = 48;

using Initialise = int (*)(void**, unsigned, unsigned, unsigned, unsigned, unsigned, unsigned, unsigned, unsigned,
                           unsigned);

/// 64 x 48 to half of that, packed rows.
int SetUpHalf(Initialise initialise, Handle& handle, unsigned strength = 0, unsigned dither = 0, unsigned soften = 0) {
  return initialise(&handle.value, kWidth, kHeight, 2 * kWidth, kWidth / 2, kHeight / 2, kWidth, strength, dither,
                    soften);
}

struct Frames {
  std::vector<unsigned char> source = std::vector<unsigned char>(std::size_t{2} * kWidth * kHeight, 90);
  std::vector<unsigned char> destination = std::vector<unsigned char>(std::size_t{2} * kWidth * kHeight, 0);
};

Frames ExecutePre(const Handle& handle, unsigned char use16Taps = 0) {
  Frames frames;
  PreProcExecute(handle.value, frames.source.data(), frames.destination.data(), 1, use16Taps, 0, 80, 3, 64, 0);
  return frames;
}

TEST(SetUp, StoresWhatEachUseStates) {
  Handle pre, post, interleaved;
  ASSERT_EQ(PreProcInit(&pre.value, 64, 48, 130, 32, 24, 70, 5, 20, 3), 1);
  ASSERT_EQ(PostProcInit(&post.value, 64, 48, 130, 32, 24, 70, 5, 20, 3), 1);
  ASSERT_TRUE(VidProc420InterleavedInit(&interleaved.value, 64, 48, 32, 24));
  EXPECT_EQ(pre->NeedsInit(64, 48, 130, 32, 24, 70, 5, 3), 0);
  EXPECT_EQ(post->NeedsInit(64, 48, 130, 32, 24, 70, 5, 3), 0);
  EXPECT_EQ(interleaved->NeedsInit(64, 48, 128, 32, 24, 64, 0, 10), 0);
  for (const Handle* handle : {&pre, &post, &interleaved}) {
    const VideoProcessor& p = handle->Get();
    EXPECT_EQ(p.lanczosLobes, 3u);
    EXPECT_EQ(p.filtersReady, 1);
    EXPECT_EQ(std::tuple(p.lumaGain[7], p.lumaGainInverse[7], p.lumaOffset[15]), std::tuple(127, 32, 0));
    EXPECT_EQ(std::tie(p.horizontalUp, p.horizontalDown, p.verticalUp, p.verticalDown), std::tuple(1, 2, 1, 2));
  }
}

TEST(SetUp, RefusesZeroSizesWithoutEffect) {
  Handle empty, filled;
  ASSERT_EQ(SetUpHalf(PreProcInit, filled, 2, 4, 1), 1);
  for (int zeroed = 0; zeroed < 6; ++zeroed) {
    unsigned v[6] = {16, 16, 32, 16, 16, 32};
    v[zeroed] = 0;
    for (Handle* handle : {&empty, &filled}) {
      EXPECT_EQ(PreProcInit(&handle->value, v[0], v[1], v[2], v[3], v[4], v[5], 0, 9, 0), 0) << zeroed;
      EXPECT_EQ(PostProcInit(&handle->value, v[0], v[1], v[2], v[3], v[4], v[5], 0, 9, 0), 0) << zeroed;
      if (zeroed % 3 == 2) continue;  // strides
      EXPECT_FALSE(VidProc420InterleavedInit(&handle->value, v[0], v[1], v[3], v[4])) << zeroed;
    }
  }
  EXPECT_EQ(empty.value, nullptr);
  EXPECT_EQ(filled->NeedsInit(kWidth, kHeight, 2 * kWidth, kWidth / 2, kHeight / 2, kWidth, 2, 1), 0);
  EXPECT_EQ(filled->ditherLevel, 4u);
  EXPECT_EQ(PreProcInit(nullptr, 16, 16, 32, 16, 16, 32, 0, 0, 0), 0);
}

TEST(SetUp, RepeatedUnchangedStoresOnlyTheDitherLevel) {
  Handle handle;
  ASSERT_EQ(SetUpHalf(PreProcInit, handle, 3, 1), 1);
  void* const first = handle.value;
  handle->horizontalFilter[2][3] = 1234;
  handle->windowKind = 1;
  const AllocationLog log;
  ASSERT_EQ(SetUpHalf(PostProcInit, handle, 3, 7), 1);
  EXPECT_EQ(handle.value, first);
  EXPECT_EQ(handle->ditherLevel, 7u);
  EXPECT_EQ(handle->horizontalFilter[2][3], 1234);
  EXPECT_EQ(handle->windowKind, 1u);
  EXPECT_EQ(log.Total(), 0u);
}

TEST(SetUp, ChangedKeepsTheObjectItsBuffersAndTheirContent) {
  Handle handle;
  ASSERT_EQ(SetUpHalf(PreProcInit, handle, 0, 1), 1);
  VideoProcessor& p = handle.Get();
  const std::tuple buffers(p.scratchA, p.scratchB, p.previousFrame, p.ditherTable);
  p.scratchA[0] = 77;
  ASSERT_EQ(PostProcInit(&handle.value, 640, 480, 1280, 320, 240, 640, 2, 6, 4), 1);
  EXPECT_EQ(&handle.Get(), &p);
  EXPECT_EQ(std::tie(p.scratchA, p.scratchB, p.previousFrame, p.ditherTable), buffers);
  EXPECT_EQ(p.scratchA[0], 77);
  EXPECT_EQ(p.NeedsInit(640, 480, 1280, 320, 240, 640, 2, 4), 0);
}

TEST(SetUp, TakesZeroedBuffersOfTheStatedSizes) {
  // (48 + 32) x (2 x 144 + 64): the larger height and the larger stride, rounded up to whole groups of 16.
  constexpr std::size_t kFrameBytes = std::size_t{80} * 352;
  Handle handle;
  const AllocationLog log;
  ASSERT_EQ(PreProcInit(&handle.value, 64, 40, 128, 32, 33, 129, 0, 0, 0), 1);
  EXPECT_EQ(log.Count(sizeof(VideoProcessor)), 1);
  EXPECT_EQ(log.Count(2 * kFrameBytes), 2);
  EXPECT_EQ(log.Only(kFrameBytes), handle->previousFrame);
  const auto isZero = [](int sample) { return sample == 0; };
  EXPECT_TRUE(std::all_of(handle->scratchA, handle->scratchA + kFrameBytes, isZero));
  EXPECT_TRUE(std::all_of(handle->scratchB, handle->scratchB + kFrameBytes, isZero));
  EXPECT_TRUE(std::all_of(handle->previousFrame, handle->previousFrame + kFrameBytes, isZero));
}

TEST(SetUp, LeavesMemoryThatNoFrameNeedsUntouched) {
  if (ResidentKilobytes() == 0) GTEST_SKIP() << "no figures on this system";
  // Two scratch buffers of two frames each, and the history.
  constexpr long kBufferKilobytes = 5L * 48 * 2 * 500'000 / 1024;
  Handle handle;
  const long before = ResidentKilobytes();
  ASSERT_EQ(PreProcInit(&handle.value, 16, 16, 500'000, 16, 16, 500'000, 0, 0, 0), 1);
  EXPECT_LT(ResidentKilobytes() - before, kBufferKilobytes / 4);
}

TEST(SetUp, RefusesBuffersBeyond31Bits) {
  const struct {
    unsigned height, stride;
  } kTooLarge[] = {{16, 0xFFFFFFFF}, {0xFFFFFFFF, 32}, {0xFFFFFFFF, 0xFFFFFFFF}, {8192, 65536}, {1u << 31, 1u << 31}};
  for (const auto& size : kTooLarge) {
    Handle handle;
    EXPECT_THROW(PreProcInit(&handle.value, 16, size.height, 32, 16, 16, size.stride, 0, 0, 0), std::bad_alloc);
    ASSERT_NE(handle.value, nullptr);
    EXPECT_EQ(handle->scratchA, nullptr);
    EXPECT_EQ(handle->filtersReady, 0);
    ExecutePre(handle);
  }
}

TEST(SetUp, FramesThatOutgrowTheBuffersAreAcceptedAndNotProcessed) {
  for (const unsigned size : {4 * kWidth, 1u << 30, 0xFFFFFFF0u}) {
    Handle handle;
    ASSERT_EQ(SetUpHalf(PreProcInit, handle), 1);
    ASSERT_EQ(PreProcInit(&handle.value, size, size, 2 * size, size, size / 2, 2 * size, 0, 0, 0), 1) << size;
    EXPECT_EQ(handle->inWidth, size);
    EXPECT_EQ(ExecutePre(handle).destination, Frames().destination) << size;
  }
}

TEST(Execute, LumaSettingsAreStoredEveryFrame) {
  Handle pre, post, interleaved;
  ASSERT_EQ(SetUpHalf(PreProcInit, pre), 1);
  ASSERT_EQ(SetUpHalf(PostProcInit, post), 1);
  ASSERT_TRUE(VidProc420InterleavedInit(&interleaved.value, 64, 48, 32, 24));
  Frames f;
  std::uint8_t* const source = f.source.data();
  std::uint8_t* const destination = f.destination.data();
  PreProcExecute(pre.value, source, destination, 1, 0, 0, 80, 3, 50, -3);
  PostProcExecute(post.value, source, destination, 0, 50, -3);
  VidProc420InterleavedExecute(interleaved.value, source, source, destination, destination, 64, 48, 64, 64, 32, 24, 32,
                               32, 50, -3);
  for (const Handle* handle : {&pre, &post, &interleaved}) {
    EXPECT_EQ(handle->Get().lumaGain[0], 50);
    EXPECT_EQ(handle->Get().lumaOffset[0], -3);
  }
}

TEST(Execute, AnyChangeOfTapsForgetsTheEnhancementStrength) {
  Handle handle;
  for (const std::uint8_t use16Taps : {std::uint8_t{1}, std::uint8_t{2}, std::uint8_t{0}}) {
    ASSERT_EQ(SetUpHalf(PreProcInit, handle, 6), 1);
    EXPECT_EQ(handle->enhanceStrength, 6u) << "the set-up after a change rebuilds";
    ExecutePre(handle, use16Taps);
    EXPECT_EQ(handle->enhanceStrength, 0u) << "the switch is compared as a byte";
  }
}

TEST(Execute, NullHandlesAreIgnored) {
  PreProcExecute(nullptr, nullptr, nullptr, 1, 1, 1, 1, 1, 1, 1);
  PostProcExecute(nullptr, nullptr, nullptr, 1, 1, 1);
  VidProc420InterleavedExecute(nullptr, nullptr, nullptr, nullptr, nullptr, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1);
}

TEST(CleanUp, IsSafeTwiceAndOnNull) {
  for (const auto cleanUp : {PreProcCleanup, PostProcCleanup, VidProc420InterleavedCleanup}) {
    Handle handle;
    cleanUp(&handle.value);
    ASSERT_EQ(SetUpHalf(PreProcInit, handle), 1);
    signed char* table = handle->ditherTable;
    cleanUp(&handle.value);
    EXPECT_EQ(handle.value, nullptr);
    cleanUp(&handle.value);
    EXPECT_EQ(table[7 * 4096], Spherical_Theta2_Guassian_Scaled_2By3[0]) << "the table outlives its processor";
    std::free(table);
    cleanUp(nullptr);
  }
}

TEST(OutOfMemory, SecondAttemptNeverReachesTheHandle) {
  Handle handle;
  Handle unreachable;
  {
    const AllocationLog log({0});
    EXPECT_EQ(SetUpHalf(PreProcInit, handle, 0, 5), 1);
    unreachable.value = log.Only(sizeof(VideoProcessor));
  }
  EXPECT_EQ(handle.value, nullptr);
  ASSERT_NE(unreachable.value, nullptr);
  EXPECT_EQ(unreachable->ditherLevel, 5u);
}

TEST(OutOfMemory, SecondFailureReachesTheCaller) {
  Handle handle;
  const AllocationLog log({0, 1});
  EXPECT_THROW(SetUpHalf(PostProcInit, handle), std::bad_alloc);
  EXPECT_EQ(handle.value, nullptr);
}

TEST(OutOfMemory, AnyFailureOfASetUpLeavesAUsableHandle) {
  std::size_t failing = 1;
  for (bool failed = true; failed; ++failing) {
    SCOPED_TRACE(failing);
    ASSERT_LT(failing, 50u);
    Handle handle;
    {
      const AllocationLog log({failing});
      try {
        SetUpHalf(PreProcInit, handle);
        failed = false;
      } catch (const std::bad_alloc&) {
      }
    }
    ASSERT_NE(handle.value, nullptr);
    EXPECT_EQ(handle->filtersReady, failed ? 0 : 1);
    ExecutePre(handle);
    // Twice as large, so that a buffer kept from the failed call would not do.
    ASSERT_EQ(PreProcInit(&handle.value, 128, 96, 256, 128, 96, 256, 0, 0, 1), 1);
    EXPECT_EQ(handle->filtersReady, 1);
  }
  EXPECT_GE(failing, 6u) << "the workspace and three buffers, each of which may fail";
}

}  // namespace
