// Sharpening by a 3x3 kernel that is folded into the banks one-dimensionally: its column sums weight each coefficient
// and its two neighbours (the ends repeated), in sixteenths; then the phase is brought back to its sum.
#pragma once

#include <cstdint>

#include "filters/phase_bank.h"

namespace vidproc::filters {

using EnhancementKernel = std::int16_t[3][3];

/// Builds the kernel of a type (the values of EnhanceFilterTypes); an unknown one leaves it as it is.
void BuildEnhancementKernel(std::uint32_t type, std::uint32_t strength, EnhancementKernel& kernel);

/// Writes the first `taps` taps of every phase, each phase with a sum of `total`. kept: a phase that cancels out stays.
void FoldEnhancement(const EnhancementKernel& kernel, int taps, std::int32_t total, const Bank& bank, Bank& enhanced);

}  // namespace vidproc::filters
