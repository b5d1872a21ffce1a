// The object's kernels: which traits each one has.
#include "frame/engine.h"
#include "kernels/kernel_table.h"

namespace vidproc {

constinit const ScalerTraits kPlainScaler = {.kernel = &KernelTable::plainScale};

}  // namespace vidproc

namespace {

using vidproc::Engine;
using vidproc::KernelTable;
using vidproc::NoiseRule;
using vidproc::ScalerTraits;

constexpr ScalerTraits kPlainWithLumaShift = {.kernel = &KernelTable::plainScaleWithLumaShift};
constexpr ScalerTraits kAdaptive = {.kernel = &KernelTable::adaptiveScale, .hasHistory = true};
constexpr ScalerTraits kMotionSmoothing = {
    .kernel = &KernelTable::motionSmoothingScale, .hasHistory = true, .smoothsMotion = true};
constexpr ScalerTraits kAdaptive16TapTemporal = {.kernel = &KernelTable::adaptive16TapScale,
                                                 .verticalTaps = 8,
                                                 .horizontalTaps = 16,
                                                 .hasHistory = true,
                                                 .listBanks = vidproc::List16TapBanks};
constexpr ScalerTraits kAdaptive16Tap = {.kernel = &KernelTable::adaptive16TapScale,
                                         .verticalTaps = 8,
                                         .horizontalTaps = 16,
                                         .listBanks = vidproc::List16TapBanks};
constexpr ScalerTraits kPost = {.kernel = &KernelTable::postScale,
                                .precisionBits = 6,
                                .noise = NoiseRule::kSizedByOutput,
                                .listBanks = vidproc::ListPostProcBanks};
constexpr ScalerTraits kPostWithoutNoise = {.kernel = &KernelTable::postScale,
                                            .precisionBits = 6,
                                            .noise = NoiseRule::kNone,
                                            .listBanks = vidproc::ListPostProcBanks};

int Scale(VideoProcessor& processor, const ScalerTraits& traits) {
  Engine::RunScaler(processor, traits);
  return 0;
}

}  // namespace

int VideoProcessor::PreProcExecute() { return Scale(*this, vidproc::kPlainScaler); }
int VideoProcessor::PreProcExecute_SSE2() { return Scale(*this, kPlainWithLumaShift); }
int VideoProcessor::PreProcAdaptiveExecute() { return Scale(*this, kAdaptive); }
int VideoProcessor::PreProcAdaptiveMotionSmoothingExecute() { return Scale(*this, kMotionSmoothing); }
int VideoProcessor::PreProcAdaptive16TapTemporalExecute() { return Scale(*this, kAdaptive16TapTemporal); }
int VideoProcessor::PreProcAdaptive16TapExecute() { return Scale(*this, kAdaptive16Tap); }

int VideoProcessor::PreProcTemporalExecute() {
  Engine::RunTemporalFilter(*this);
  return 0;
}

int VideoProcessor::PostProcExecute() {
  Engine::RunPostProcessor(*this, kPost);
  return 0;
}

int VideoProcessor::PostProcExecute_SSE2() {
  Engine::RunPostProcessor(*this, kPostWithoutNoise);
  return 0;
}

int VideoProcessor::Deblock8x8() {
  Engine::RunDeblocking(*this);
  return 0;
}
