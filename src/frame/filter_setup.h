// Banks and ratios of the processor object from its fields.
#pragma once

#include <cstdint>

#include "vidproc/video_processor.h"

namespace vidproc {

/// Rebuilds the enhancement kernel, the ratios, the resampling banks and their lane copies.
void SetUpFilters(VideoProcessor& processor, EnhanceFilterTypes type, std::uint32_t strength,
                  std::uint32_t precisionBits);

}  // namespace vidproc
