// Banks of the interface's scaler, by filter, ratio and taps. A flat field stays flat and nothing drifts: every phase
// sums to exactly 1 << precisionBits and has its centroid within 1/64 of a sample of the output sample, phase 16 - q
// mirrors phase q, and phases 0 and 8 are symmetric.
#pragma once

#include <cstdint>

#include "filters/kernel_shape.h"
#include "filters/phase_bank.h"
#include "filters/resampling_bank.h"

namespace vidproc::filters {

enum class ScalingKernel {
  kAutomatic,  ///< chosen by ratio and taps, see automatic_filter.cpp
  kIdentity,   ///< phase 0 leaves the samples as they are
  kBilinear,   ///< these five are widened on downscales
  kCatmullRom,
  kMitchell,
  kLanczos,     ///< of three lobes; of two with 4 taps
  kArea,        ///< mean of the covered samples; upscales are bilinear. Its centroid may lie 1/8 of a sample off, with
                ///< 16 taps 1/4 (6 bits: 1/2), and sharpened 1/2
  kFixedWidth,  ///< ScalingDesign::fixedWidth, whatever the ratio
};

inline constexpr std::uint32_t kMaxSharpening = 16;

struct ScalingDesign {
  ScalingKernel kernel = ScalingKernel::kAutomatic;
  ResamplingKernel fixedWidth = {};  ///< of kFixedWidth only
  std::uint32_t sharpening = 0;      ///< sixteenths of (2, -1 on both sides) added to each sample; 0..kMaxSharpening
};

/// Fills a whole bank: taps 0..taps - 1 of every phase, zeros behind them. Tap t of a phase weights source sample
/// n + t - CentreTap(taps); phase 0 leaves its last tap 0. `up`:`down` is the ratio of the step (output size to input
/// size, positive, need not be reduced), `taps` 4, 8 or 16, `precisionBits` 6 or 7. False, with the bank untouched, for
/// anything else. kept: the phases of a kernel of fixed width that is not sharpened may miss their sum by one.
bool DesignScalingBank(const ScalingDesign& filter, int up, int down, int taps, int precisionBits, Bank& bank);

/// The same bank from a kernel of one's own.
void DesignShapeBank(const KernelShape& shape, std::uint32_t sharpening, int taps, int precisionBits, Bank& bank);

}  // namespace vidproc::filters
