// The object's kernels: which traits each one has.
#include "frame/bank_listing.h"
#include "frame/engine.h"
#include "simd/kernel_table.h"

namespace vidproc {

const ScalerTraits kPlainScaler = {&KernelTable::plainScale, 4, 8, 7, false, false, NoiseRule::kSizedByInput,
                                   ListPreProcBanks};

}  // namespace vidproc

namespace {

using vidproc::Engine;
using vidproc::KernelTable;
using vidproc::NoiseRule;
using vidproc::ScalerTraits;

//                                            kernel, taps (vertical, horizontal), precision, history, motion, noise,
//                                            listing
constexpr ScalerTraits kPlainWithLumaShift = {
    &KernelTable::plainScaleWithLumaShift, 4, 8, 7, false, false, NoiseRule::kSizedByInput, vidproc::ListPreProcBanks};
constexpr ScalerTraits kAdaptive = {&KernelTable::adaptiveScale, 4, 8, 7, true, false, NoiseRule::kSizedByInput,
                                    vidproc::ListPreProcBanks};
constexpr ScalerTraits kMotionSmoothing = {
    &KernelTable::motionSmoothingScale, 4, 8, 7, true, true, NoiseRule::kSizedByInput, vidproc::ListPreProcBanks};
constexpr ScalerTraits kAdaptive16TapTemporal = {
    &KernelTable::adaptive16TapTemporalScale, 8, 16, 7, true, false, NoiseRule::kSizedByInput, vidproc::List16TapBanks};
constexpr ScalerTraits kAdaptive16Tap = {
    &KernelTable::adaptive16TapScale, 8, 16, 7, false, false, NoiseRule::kSizedByInput, vidproc::List16TapBanks};
constexpr ScalerTraits kPost = {&KernelTable::postScale,   4, 8, 6, false, false, NoiseRule::kSizedByOutput,
                                vidproc::ListPostProcBanks};
constexpr ScalerTraits kPostWithoutNoise = {&KernelTable::postScale,   4, 8, 6, false, false, NoiseRule::kNone,
                                            vidproc::ListPostProcBanks};

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
