// The object's scalers, as the code around the kernels sees them.
#pragma once

#include "frame/bank_listing.h"
#include "kernels/kernel_table.h"
#include "kernels/kernel_traits.h"
#include "noise/frame_noise.h"

namespace vidproc {

/// A kernel and what the object does around it.
struct ScalerTraits {
  void (*KernelTable::*run)(const ScaleJob&);
  KernelTraits kernel;
  bool hasHistory = false;  ///< blends with the previous output
  NoiseRule noise = NoiseRule::kSizedByInput;
  void (*listBanks)(const VideoProcessor&) = ListPreProcBanks;
};

/// What this one needs of the buffers, every scaler needs.
inline constexpr ScalerTraits kPlainScaler = {.run = &KernelTable::plainScale, .kernel = kPlainTraits};
inline constexpr ScalerTraits kPlainWithLumaShift = {.run = &KernelTable::plainScaleWithLumaShift,
                                                     .kernel = kPlainTraits};
inline constexpr ScalerTraits kAdaptive = {
    .run = &KernelTable::adaptiveScale, .kernel = kAdaptiveTraits, .hasHistory = true};
inline constexpr ScalerTraits kMotionSmoothing = {
    .run = &KernelTable::motionSmoothingScale, .kernel = kMotionSmoothingTraits, .hasHistory = true};
inline constexpr ScalerTraits kAdaptive16TapTemporal = {.run = &KernelTable::adaptive16TapScale,
                                                        .kernel = kAdaptive16TapTraits,
                                                        .hasHistory = true,
                                                        .listBanks = List16TapBanks};
inline constexpr ScalerTraits kAdaptive16Tap = {
    .run = &KernelTable::adaptive16TapScale, .kernel = kAdaptive16TapTraits, .listBanks = List16TapBanks};
inline constexpr ScalerTraits kPost = {.run = &KernelTable::postScale,
                                       .kernel = kPostTraits,
                                       .noise = NoiseRule::kSizedByOutput,
                                       .listBanks = ListPostProcBanks};
inline constexpr ScalerTraits kPostWithoutNoise = {
    .run = &KernelTable::postScale, .kernel = kPostTraits, .noise = NoiseRule::kNone, .listBanks = ListPostProcBanks};

}  // namespace vidproc
