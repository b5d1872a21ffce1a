// Scaler configuration: the ratios, the resampling banks with the enhancement kernel folded in, and their lane copies.
#pragma once

#include <cstdint>

#include "vidproc/video_processor.h"

namespace vidproc::filters {

/// VideoProcessor::windowKind.
enum WindowKind : std::uint32_t { kTwoSincs = 0, kHammingSinc = 1, kGaussian = 2 };

/// Rebuilds the enhancement kernel, the ratios, the banks and the lane copies from the processor's fields.
void ConfigureScaler(VideoProcessor& processor, EnhanceFilterTypes type, std::uint32_t strength,
                     std::uint32_t precisionBits);

}  // namespace vidproc::filters
