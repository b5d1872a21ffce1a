// The settings that denoising takes on by itself: one for each strength of a camera's noise.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "pipeline/pipeline.h"

namespace vidproc {

/// All settings that denoising may take on while it runs: the asked ones alone, or where it is automatic a ladder of
/// them, weakest first, each with its motion smoothing as asked. @throws std::bad_alloc
std::vector<DenoiseSettings> DenoiseLadder(const DenoiseSettings& asked);

/// The step of the automatic ladder for noise of this standard deviation, in hundredths of a luma level.
std::size_t LadderStep(std::int64_t deviation);

}  // namespace vidproc
