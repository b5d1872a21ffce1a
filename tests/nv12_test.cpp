// The 4:2:0 functions at every level against staging, plain scaler and unstaging of the reference.
#include "reference/nv12.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "kernel_harness.h"

namespace {

using namespace testing_support;

struct PlaneSize {
  PlaneSize(std::size_t rowBytes, std::size_t rows, Random& random)
      : stride(rowBytes + static_cast<std::size_t>(random.OneIn(2) ? 0 : random.Between(1, 40))),
        bytes((rows - 1) * stride + rowBytes) {}
  std::size_t stride;
  std::size_t bytes;
};

/// A luma and a chroma plane in guarded memory. Odd widths have a whole last pair of chroma.
struct PlanePair {
  PlanePair(std::size_t width, std::size_t height, Flush flush, Random& random)
      : lumaSize(width, height, random),
        chromaSize((width + 1) / 2 * 2, (height + 1) / 2, random),
        luma(lumaSize.bytes, flush, random),
        chroma(chromaSize.bytes, flush, random) {}

  void Load() {
    luma.Load();
    chroma.Load();
  }
  std::string FirstDifference() const {
    const std::string difference = luma.FirstDifference(0, lumaSize.stride);
    return difference.empty() ? chroma.FirstDifference(0, chromaSize.stride) : difference;
  }

  PlaneSize lumaSize, chromaSize;
  GuardedMemory luma, chroma;
};

void RunReference(const VideoProcessor& processor, PlanePair& in, PlanePair& out) {
  std::vector<std::uint8_t> staged(processor.inHeight * processor.inStride);
  std::vector<std::uint8_t> scaled(processor.outHeight * processor.outStride);
  reference::StageNv12({in.luma.Expected(), in.chroma.Expected(), in.lumaSize.stride, in.chromaSize.stride},
                       processor.inWidth, processor.inHeight, staged.data());
  reference::StreamState unused;
  const Kernel& scaler = kKernels[0];
  reference::RunScaler(ReadSettings(processor, scaler), ReadNoise(processor, scaler), unused, staged.data(),
                       scaled.data());
  reference::UnstageNv12(scaled.data(), processor.outWidth, processor.outHeight,
                         {out.luma.Expected(), out.chroma.Expected(), out.lumaSize.stride, out.chromaSize.stride});
}

void CompareAllLevels(unsigned inWidth, unsigned inHeight, unsigned outWidth, unsigned outHeight, std::uint32_t seed) {
  Random random(seed);
  void* handle = nullptr;
  ASSERT_TRUE(VidProc420InterleavedInit(&handle, inWidth, inHeight, outWidth, outHeight));
  Processor processor(static_cast<VideoProcessor*>(handle));
  processor->ditherLevel = random.OneIn(2) ? 0 : static_cast<std::uint32_t>(random.Between(1, 12));
  processor->ditherSeed = random.Between(0, 255);
  const Flush flush = random.OneIn(3) ? Flush::kBegin : Flush::kEnd;
  PlanePair in(inWidth, inHeight, flush, random), out(outWidth, outHeight, flush, random);
  RunReference(*processor, in, out);
  for (const vidproc::Level level : AvailableLevels()) {
    vidproc::CapLevel(level);
    in.Load();
    out.Load();
    VidProc420InterleavedExecute(
        handle, in.luma.Live(), in.chroma.Live(), out.luma.Live(), out.chroma.Live(), inWidth, inHeight,
        static_cast<unsigned>(in.lumaSize.stride), static_cast<unsigned>(in.chromaSize.stride), outWidth, outHeight,
        static_cast<unsigned>(out.lumaSize.stride), static_cast<unsigned>(out.chromaSize.stride), 64, 0);
    EXPECT_EQ(out.FirstDifference() + in.FirstDifference(), "")
        << vidproc::LevelName(level) << " seed " << seed << ": " << inWidth << "x" << inHeight << " to " << outWidth
        << "x" << outHeight << " dither " << processor->ditherLevel << "/" << processor->ditherSeed;
  }
  vidproc::CapLevel(vidproc::BestLevel());
}

TEST(Nv12Test, SmallFrames) {
  for (std::uint32_t seed = 1; seed <= 120; ++seed) {
    Random random(seed * 31);
    const auto draw = [&](int low, int high) { return static_cast<unsigned>(random.Between(low, high)); };
    const unsigned inWidth = draw(2, 130), inHeight = draw(1, 70);
    const bool sameSize = random.OneIn(4);
    CompareAllLevels(inWidth, inHeight, sameSize ? inWidth : draw(2, 130), sameSize ? inHeight : draw(1, 70), seed);
    ASSERT_FALSE(testing::Test::HasFailure());
  }
}

TEST(Nv12Test, LargeFrames) {
  CompareAllLevels(640, 480, 640, 480, 1);
  CompareAllLevels(1280, 720, 640, 360, 2);
  CompareAllLevels(854, 480, 1280, 720, 3);
}

}  // namespace
