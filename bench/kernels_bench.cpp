// The kernels of this library, each at every level that the machine has, and a copy of the frame as the floor.
#include <memory>
#include <string>
#include <vector>

#include "contest.h"
#include "vidproc/video_processor.h"

namespace bench {
namespace {

constexpr int kSoftenLevel = 10;
constexpr unsigned char kTemporalStrength = 80, kTemporalShift = 3, kAdaptive = 2;

unsigned Unsigned(int value) { return static_cast<unsigned>(value); }
unsigned Stride(Size size) { return 2 * Unsigned(size.width); }

using InitFunction = decltype(&PreProcInit);

std::shared_ptr<VideoProcessor> SetUp(InitFunction init, const Contest& contest, int strength, int soften) {
  void* handle = nullptr;
  init(&handle, Unsigned(contest.in.width), Unsigned(contest.in.height), Stride(contest.in),
       Unsigned(contest.out.width), Unsigned(contest.out.height), Stride(contest.out), Unsigned(strength), 0,
       Unsigned(soften));
  return {static_cast<VideoProcessor*>(handle), [](void* created) { PreProcCleanup(&created); }};
}

/// One member function of the processor on the two frames.
Run RunMember(const std::shared_ptr<VideoProcessor>& processor, int (VideoProcessor::*member)()) {
  return [=](const std::uint8_t* source, std::uint8_t* destination) {
    processor->srcFrame = const_cast<std::uint8_t*>(source);
    processor->dstFrame = destination;
    ((*processor).*member)();
  };
}

void EnterScalers() {
  for (const int soften : {kSoftenLevel, 0}) {
    for (const Contest& contest : ScaleContests(soften)) {
      EnterLevels(contest,
                  [=] { return RunMember(SetUp(PreProcInit, contest, 0, soften), &VideoProcessor::PreProcExecute); });
    }
  }
  for (Contest contest : ScaleContests(kSoftenLevel)) {
    contest.work = "lumashift";
    EnterLevels(contest, [=] {
      const auto processor = SetUp(PreProcInit, contest, 0, kSoftenLevel);
      processor->InitLuminanceShiftTables(70, -5);
      return RunMember(processor, &VideoProcessor::PreProcExecute_SSE2);
    });
  }
  std::vector<Contest> postScaleContests = PostScaleContests();
  postScaleContests.push_back(PostSharpenContest());
  for (const Contest& contest : postScaleContests) {
    EnterLevels(contest,
                [=] { return RunMember(SetUp(PostProcInit, contest, 1, 0), &VideoProcessor::PostProcExecute); });
  }
  for (const Contest& contest : MemoryContests()) {
    EnterLevels(contest, [=] {
      return RunMember(SetUp(PreProcInit, contest, 0, kSoftenLevel), &VideoProcessor::PreProcExecute);
    });
  }
}

void EnterAdaptive(const std::string& work, unsigned char use16Taps, unsigned char smoothing) {
  for (const Contest& contest : AdaptiveContests(work)) {
    EnterLevels(contest, [=] {
      const auto processor = SetUp(PreProcInit, contest, 0, kSoftenLevel);
      return [=](const std::uint8_t* source, std::uint8_t* destination) {
        PreProcExecute(processor.get(), const_cast<std::uint8_t*>(source), destination, kAdaptive, use16Taps, smoothing,
                       kTemporalStrength, kTemporalShift, 64, 0);
      };
    });
  }
}

/// The kernel that the processor's routing never takes.
void EnterAdaptive16WithoutBlend() {
  for (const Contest& contest : AdaptiveContests("adaptive16noblend")) {
    EnterLevels(contest, [=] {
      const auto processor = SetUp(PreProcInit, contest, 0, kSoftenLevel);
      processor->SetTaps(1);
      processor->SetEnhanceFilter(EnhanceLaplacian4, 0, 7, 128, 0);
      processor->SetAdaptive(kAdaptive);
      return RunMember(processor, &VideoProcessor::PreProcAdaptive16TapExecute);
    });
  }
}

void EnterTemporal() {
  for (const Contest& contest : TemporalContests()) {
    EnterCopy(contest);
    EnterLevels(contest, [=] {
      const auto processor = SetUp(PreProcInit, contest, 0, 0);
      processor->SetTemporalFilter(kTemporalStrength, kTemporalShift);
      return RunMember(processor, &VideoProcessor::PreProcTemporalExecute);
    });
  }
}

void EnterDeblocking() {
  EnterLevels(DeblockContest(), [] {
    const auto processor = SetUp(PostProcInit, DeblockContest(), 0, 0);
    processor->InitDeblocker(30);
    processor->SetDeblockTestPattern(0);
    return [=](const std::uint8_t*, std::uint8_t* frame) {
      processor->srcFrame = frame;
      processor->Deblock8x8();
    };
  });
}

void EnterNv12() {
  EnterLevels(Nv12Contest(), [] {
    const Size in = Nv12Contest().in, out = Nv12Contest().out;
    void* handle = nullptr;
    VidProc420InterleavedInit(&handle, Unsigned(in.width), Unsigned(in.height), Unsigned(out.width),
                              Unsigned(out.height));
    const std::shared_ptr<void> processor(handle, [](void* created) { VidProc420InterleavedCleanup(&created); });
    return [=](const std::uint8_t* source, std::uint8_t* destination) {
      auto* luma = const_cast<std::uint8_t*>(source);
      VidProc420InterleavedExecute(processor.get(), luma, luma + in.width * in.height, destination,
                                   destination + out.width * out.height, Unsigned(in.width), Unsigned(in.height),
                                   Unsigned(in.width), Unsigned(in.width), Unsigned(out.width), Unsigned(out.height),
                                   Unsigned(out.width), Unsigned(out.width), 64, 0);
    };
  });
}

void EnterNoise() {
  const Contest contest = NoiseContest();
  EnterCopy({.work = contest.work, .in = contest.in, .out = contest.out});
  EnterLevels(contest, [=] {
    const auto processor = SetUp(PostProcInit, contest, 1, 0);
    return [=](const std::uint8_t*, std::uint8_t* frame) {
      processor->PostProcDitherNoiseUpon2VUY(
          frame, frame, Stride(contest.in), static_cast<unsigned short>(contest.in.width),
          static_cast<unsigned short>(contest.in.height), 1, 0, 8, processor->ditherTable);
    };
  });
}

/// Once the brightness has settled, frames of the same scene keep the service watching.
void EnterExposure() {
  const Contest contest = {.work = "exposure", .in = k720p, .out = k720p, .frames = kHistoryFrames, .writes = false};
  EnterLevels(contest, [=] {
    constexpr int kSettled = 0, kMostFrames = 200;
    void* handle = nullptr;
    VidProcAdjustAutoExposureInit(&handle, contest.in.width, contest.in.height, 0);
    const std::shared_ptr<void> watcher(handle, [](void* created) { VidProcAdjustAutoExposureCleanup(&created); });
    const auto watch = [=](const std::uint8_t* source, std::uint8_t*) {
      return VidProcAdjustAutoExposure(watcher.get(), const_cast<std::uint8_t*>(source));
    };
    for (int i = 0; i < kMostFrames; ++i) {
      if (watch(Frame(contest.format, contest.in, i % kHistoryFrames).data(), nullptr) == kSettled) return Run(watch);
    }
    return Run();
  });
}

/// A repeated set-up whose strength has changed.
void EnterSetUp() {
  const Contest contest = {.work = "setup", .in = k720p, .out = k360p, .writes = false};
  Enter(contest, "vidproc", [=] {
    const auto processor = SetUp(PreProcInit, contest, 1, kSoftenLevel);
    return [=, strength = 1u](const std::uint8_t*, std::uint8_t*) mutable {
      strength = 3 - strength;
      void* handle = processor.get();
      PreProcInit(&handle, Unsigned(contest.in.width), Unsigned(contest.in.height), Stride(contest.in),
                  Unsigned(contest.out.width), Unsigned(contest.out.height), Stride(contest.out), strength, 0,
                  kSoftenLevel);
    };
  });
}

const bool kEntered = [] {
  EnterScalers();
  EnterAdaptive("adaptive", 0, 0);
  EnterAdaptive("adaptive16", 1, 0);
  EnterAdaptive("smoothing", 0, 1);
  EnterAdaptive16WithoutBlend();
  EnterTemporal();
  EnterDeblocking();
  EnterNv12();
  EnterNoise();
  EnterExposure();
  EnterSetUp();
  return true;
}();

}  // namespace
}  // namespace bench
