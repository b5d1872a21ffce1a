// The object's scalers, as the code around the kernels sees them.
#pragma once

#include "frame/bank_listing.h"
#include "kernels/kernel_table.h"
#include "noise/frame_noise.h"

namespace vidproc {

/// What tells one scaler from another; the plain scaler's unless stated.
struct ScalerTraits {
  void (*KernelTable::*kernel)(const ScaleJob&);
  int verticalTaps = 4;
  int horizontalTaps = 8;
  int precisionBits = 7;
  bool adapts = false;  ///< taps lose weight as their sample differs from the centre's
  bool hasHistory = false;
  bool smoothsMotion = false;
  NoiseRule noise = NoiseRule::kSizedByInput;
  void (*listBanks)(const VideoProcessor&) = ListPreProcBanks;
};

/// What this one needs of the buffers, every scaler needs.
inline constexpr ScalerTraits kPlainScaler = {.kernel = &KernelTable::plainScale};
inline constexpr ScalerTraits kPlainWithLumaShift = {.kernel = &KernelTable::plainScaleWithLumaShift};
inline constexpr ScalerTraits kAdaptive = {.kernel = &KernelTable::adaptiveScale, .adapts = true, .hasHistory = true};
inline constexpr ScalerTraits kMotionSmoothing = {
    .kernel = &KernelTable::motionSmoothingScale, .adapts = true, .hasHistory = true, .smoothsMotion = true};
inline constexpr ScalerTraits kAdaptive16TapTemporal = {.kernel = &KernelTable::adaptive16TapScale,
                                                        .verticalTaps = 8,
                                                        .horizontalTaps = 16,
                                                        .adapts = true,
                                                        .hasHistory = true,
                                                        .listBanks = List16TapBanks};
inline constexpr ScalerTraits kAdaptive16Tap = {.kernel = &KernelTable::adaptive16TapScale,
                                                .verticalTaps = 8,
                                                .horizontalTaps = 16,
                                                .adapts = true,
                                                .listBanks = List16TapBanks};
inline constexpr ScalerTraits kPost = {.kernel = &KernelTable::postScale,
                                       .precisionBits = 6,
                                       .noise = NoiseRule::kSizedByOutput,
                                       .listBanks = ListPostProcBanks};
inline constexpr ScalerTraits kPostWithoutNoise = {
    .kernel = &KernelTable::postScale, .precisionBits = 6, .noise = NoiseRule::kNone, .listBanks = ListPostProcBanks};

}  // namespace vidproc
