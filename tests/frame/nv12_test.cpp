// The 4:2:0 functions at every level against staging, plain scaler and unstaging of the reference.
#include <gtest/gtest.h>

#include "support/kernel_harness.h"
#include "support/planes_420.h"

namespace {

using namespace testing_support;

void CompareAllLevels(unsigned inWidth, unsigned inHeight, unsigned outWidth, unsigned outHeight, std::uint32_t seed) {
  Random random(seed);
  void* handle = nullptr;
  ASSERT_TRUE(VidProc420InterleavedInit(&handle, inWidth, inHeight, outWidth, outHeight));
  Processor processor(static_cast<VideoProcessor*>(handle));
  processor->ditherLevel = random.OneIn(2) ? 0 : static_cast<std::uint32_t>(random.Between(1, 12));
  processor->ditherSeed = random.Between(0, 255);
  const Flush flush = random.OneIn(3) ? Flush::kBegin : Flush::kEnd;
  PlanePair in(inWidth, inHeight, flush, random), out(outWidth, outHeight, flush, random);
  RunReference420(*processor, in, out);
  for (const KernelForms& forms : AvailableForms()) {
    const FormsInUse inUse(forms);
    in.Load();
    out.Load();
    Execute420(handle, in, out);
    EXPECT_EQ(out.FirstDifference() + in.FirstDifference(), "")
        << forms.Name() << " seed " << seed << ": " << inWidth << "x" << inHeight << " to " << outWidth << "x"
        << outHeight << " dither " << processor->ditherLevel << "/" << processor->ditherSeed;
  }
}

TEST(Nv12Test, SmallFrames) {
  for (std::uint32_t seed = 1; seed <= 120; ++seed) {
    Random random(seed * 31);
    const auto draw = [&](int low, int high) { return static_cast<unsigned>(random.Between(low, high)); };
    // From 128 pixels on, levels with the byte row scaler read the planes without staging.
    const unsigned inWidth = random.OneIn(2) ? draw(2, 127) : draw(128, 400), inHeight = draw(1, 70);
    const bool sameSize = random.OneIn(4);
    const unsigned outWidth = random.OneIn(4) ? draw(128, 400) : draw(2, 127);
    CompareAllLevels(inWidth, inHeight, sameSize ? inWidth : outWidth, sameSize ? inHeight : draw(1, 70), seed);
    ASSERT_FALSE(testing::Test::HasFailure());
  }
}

TEST(Nv12Test, LargeFrames) {
  CompareAllLevels(640, 480, 640, 480, 1);
  CompareAllLevels(1280, 720, 640, 360, 2);
  CompareAllLevels(854, 480, 1280, 720, 3);
}

}  // namespace
