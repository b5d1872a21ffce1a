// The exported functions as hosts use them: random sequences of set-ups, frames and clean-ups on one handle, at every
// level, against a model of the handle and the reference kernels.
#include <gtest/gtest.h>

#include <cstdlib>
#include <sstream>
#include <string>
#include <vector>

#include "support/handle_model.h"
#include "support/kernel_harness.h"
#include "support/planes_420.h"

namespace {

using namespace testing_support;

constexpr std::uint32_t kSequences = 100;
constexpr int kSteps = 15;

bool Initialise(Use use, void** handle, const SetUpArguments& a) {
  if (use == Use::kInterleaved420) {
    return VidProc420InterleavedInit(handle, a.inWidth, a.inHeight, a.outWidth, a.outHeight);
  }
  const auto init = use == Use::kPreProcessing ? PreProcInit : PostProcInit;
  return init(handle, a.inWidth, a.inHeight, a.inStride, a.outWidth, a.outHeight, a.outStride, a.enhanceStrength,
              a.ditherLevel, a.softenLevel) == 1;
}

void CleanUp(Use use, void** handle) {
  // The dither table outlives its processor by design; the tests are not to pile it up.
  if (*handle != nullptr) std::free(static_cast<VideoProcessor*>(*handle)->ditherTable);
  const auto cleanUp = use == Use::kPreProcessing    ? PreProcCleanup
                       : use == Use::kPostProcessing ? PostProcCleanup
                                                     : VidProc420InterleavedCleanup;
  cleanUp(handle);
}

std::uint32_t DrawPadding(Random& random) {
  if (random.OneIn(20)) return 0u - 1;  // a row does not fit its stride
  return random.OneIn(2) ? 0 : random.Pick<std::uint32_t>({2, 4, 7, 16, 50});
}

class Sequence {
 public:
  explicit Sequence(std::uint32_t seed)
      : random(seed),
        use(random.Pick({Use::kPreProcessing, Use::kPreProcessing, Use::kPostProcessing, Use::kInterleaved420})) {
    for (const KernelForms& form : AvailableForms()) handles.push_back({form, nullptr});
    text << "seed " << seed;
  }
  ~Sequence() {
    for (Handle& handle : handles) CleanUp(use, &handle.processor);
  }
  Sequence(const Sequence&) = delete;
  Sequence& operator=(const Sequence&) = delete;

  void Step() {
    const Use now =
        random.OneIn(8) ? random.Pick({Use::kPreProcessing, Use::kPostProcessing, Use::kInterleaved420}) : use;
    if (!model.Exists() || random.OneIn(5)) {
      SetUp(now);
    } else if (random.OneIn(12)) {
      text << "\nclean-up";
      for (Handle& handle : handles) CleanUp(now, &handle.processor);
      model.CleanUp();
    } else if (now == Use::kInterleaved420) {
      // This function sets up packed rows; what it leaves between padded ones is not documented.
      const SetUpArguments& set = model.Current();
      if (set.SourceIsPacked() && set.DestinationIsPacked()) Process420();
    } else {
      Process(now);
    }
    for (const Handle& handle : handles) {
      ASSERT_EQ(handle.processor != nullptr, model.Exists()) << text.str();
      if (!model.Exists()) continue;
      EXPECT_EQ(handle.Get().temporalFirstFrame != 0, model.IsFirstFrame()) << handle.form.Name() << " " << text.str();
    }
  }

 private:
  struct Handle {
    KernelForms form;
    void* processor;

    VideoProcessor& Get() const { return *static_cast<VideoProcessor*>(processor); }
  };

  std::uint32_t Draw(int low, int high) { return static_cast<std::uint32_t>(random.Between(low, high)); }

  void DrawSizes(SetUpArguments& a) {
    // From 128 pixels on, planes may be read without staging.
    a.inWidth = random.OneIn(30) ? 1 : random.OneIn(3) ? Draw(128, 200) : Draw(2, 100);
    a.inHeight = Draw(1, 40);
    a.outWidth = random.OneIn(30) ? 1 : random.OneIn(5) ? Draw(128, 200) : Draw(2, 100);
    a.outHeight = Draw(1, 40);
    if (random.OneIn(2)) {
      a.outWidth = a.inWidth;
      a.inHeight = a.outHeight = Draw(16, 40);  // the temporal filter does not write to less
    }
    // Buffers never grow: large ones from the start let most frames through.
    if (!model.Exists() && !random.OneIn(4)) a.inWidth = 200, a.inHeight = 40;
  }

  SetUpArguments DrawSetUp(Use now) {
    SetUpArguments a = model.Current();
    const bool again = model.Exists() && random.OneIn(3);
    if (!again) DrawSizes(a);
    if (now == Use::kInterleaved420) {
      a = SetUpArguments::For420(a.inWidth, a.inHeight, a.outWidth, a.outHeight);
    } else {
      if (!again) a.inStride = 2 * a.inWidth + DrawPadding(random);
      if (!again) a.outStride = 2 * a.outWidth + DrawPadding(random);
      if (!again || random.OneIn(2)) a.enhanceStrength = random.OneIn(2) ? 0 : Draw(1, 6);
      if (!again || random.OneIn(2)) a.softenLevel = random.OneIn(3) ? Draw(1, 12) : 0;
      a.ditherLevel = random.OneIn(2) ? 0 : Draw(1, 14);
    }
    if (random.OneIn(10)) random.Pick({&a.inWidth, &a.inHeight, &a.outWidth, &a.outHeight})[0] = 0;
    return a;
  }

  void SetUp(Use now) {
    const SetUpArguments a = DrawSetUp(now);
    text << "\nset-up " << static_cast<int>(now) << ": " << a.inWidth << "x" << a.inHeight << "/" << a.inStride
         << " to " << a.outWidth << "x" << a.outHeight << "/" << a.outStride << " strength " << a.enhanceStrength
         << " soften " << a.softenLevel << " dither " << a.ditherLevel;
    model.ditherSeed = random.Between(0, 1000);
    model.deblockTestPattern = random.OneIn(4);
    const bool expected = model.SetUp(now, a);
    for (Handle& handle : handles) {
      EXPECT_EQ(Initialise(now, &handle.processor, a), expected) << text.str();
      if (handle.processor == nullptr) continue;
      handle.Get().ditherSeed = model.ditherSeed;
      handle.Get().SetDeblockTestPattern(model.deblockTestPattern);
    }
  }

  FrameArguments DrawFrame() {
    if (random.OneIn(3)) {
      frame.use16Taps = random.OneIn(3) ? random.Pick<std::uint8_t>({1, 2}) : 0;
      frame.motionSmoothing = random.OneIn(2);
    }
    frame.adaptive = random.OneIn(4) ? 0 : static_cast<std::uint8_t>(random.Between(1, 9));
    frame.temporalStrength = static_cast<std::uint8_t>(random.Between(0, 140));
    frame.temporalShift = static_cast<std::uint8_t>(random.Between(0, 10));
    frame.lumaGain = static_cast<std::int16_t>(random.Between(-200, 200));
    frame.lumaOffset = static_cast<std::int16_t>(random.Between(-300, 300));
    frame.deblock = random.OneIn(3) ? random.Pick<std::uint8_t>({20, 21, 35, 60}) : 0;
    return frame;
  }

  void PaintSource(GuardedMemory& source) {
    const SetUpArguments& set = model.Current();
    Paint(random.Pick({Content::kNoise, Content::kSmooth, Content::kDrift, Content::kDrift, Content::kStill}),
          static_cast<int>(2 * set.inWidth), static_cast<int>(set.inHeight), random, picture);
    source.PutRows(picture, 2 * set.inWidth, 0, set.inStride);
  }

  static std::size_t FrameBytes(std::uint32_t width, std::uint32_t height, std::uint32_t stride) {
    return std::size_t{height - 1} * stride + 2 * std::size_t{width};
  }

  void Process(Use now) {
    const SetUpArguments& set = model.Current();
    const FrameArguments f = DrawFrame();
    text << "\nframe " << static_cast<int>(now) << ": adaptive " << int{f.adaptive} << " 16taps " << int{f.use16Taps}
         << " smoothing " << int{f.motionSmoothing} << " temporal " << int{f.temporalStrength} << ">>"
         << int{f.temporalShift} << " deblock " << int{f.deblock};
    GuardedMemory source(FrameBytes(set.inWidth, set.inHeight, set.inStride), Flush::kEnd, random);
    GuardedMemory destination(FrameBytes(set.outWidth, set.outHeight, set.outStride), Flush::kEnd, random);
    PaintSource(source);
    for (const Handle& handle : handles) {
      const FormsInUse inUse(handle.form);
      source.Load();
      destination.Load();
      if (now == Use::kPreProcessing) {
        PreProcExecute(handle.processor, source.Live(), destination.Live(), f.adaptive, f.use16Taps, f.motionSmoothing,
                       f.temporalStrength, f.temporalShift, f.lumaGain, f.lumaOffset);
      } else {
        PostProcExecute(handle.processor, source.Live(), destination.Live(), f.deblock, f.lumaGain, f.lumaOffset);
      }
      if (&handle == handles.data()) {
        const auto process = now == Use::kPreProcessing ? &HandleModel::PreProcess : &HandleModel::PostProcess;
        (model.*process)(f, destination.HasChanged(), source.Expected(), destination.Expected());
      }
      EXPECT_EQ(destination.FirstDifference(0, set.outStride) + source.FirstDifference(0, set.inStride), "")
          << handle.form.Name() << " " << text.str();
    }
  }

  void Process420() {
    const SetUpArguments& set = model.Current();
    text << "\nframe of planes";
    PlanePair in(set.inWidth, set.inHeight, Flush::kEnd, random), out(set.outWidth, set.outHeight, Flush::kEnd, random);
    for (const Handle& handle : handles) {
      const FormsInUse inUse(handle.form);
      in.Load();
      out.Load();
      Execute420(handle.processor, in, out);
      if (&handle == handles.data()) model.Process420(out.luma.HasChanged(), in, out);
      EXPECT_EQ(out.FirstDifference() + in.FirstDifference(), "") << handle.form.Name() << " " << text.str();
    }
  }

  Random random;
  Use use;
  HandleModel model;
  FrameArguments frame = {};  // the last one's
  std::vector<Handle> handles;
  std::vector<std::uint8_t> picture;  // packed source of the last frame
  std::ostringstream text;            // what has happened so far
};

TEST(ExportedInterface, RandomSequences) {
  for (std::uint32_t seed = 1; seed <= kSequences; ++seed) {
    Sequence sequence(seed);
    for (int step = 0; step < kSteps; ++step) {
      sequence.Step();
      ASSERT_FALSE(HasFailure());
    }
  }
}

}  // namespace
