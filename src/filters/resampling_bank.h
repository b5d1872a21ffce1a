// Resampling banks: a product of two sincs, a Hamming-windowed sinc or a Gaussian.
#pragma once

#include <cstdint>

#include "filters/phase_bank.h"

namespace vidproc::filters {

enum KernelKind : std::uint32_t { kTwoSincs = 0, kHammingSinc = 1, kGaussian = 2 };

inline bool IsKernelKind(std::uint32_t kind) { return kind <= kGaussian; }

struct ResamplingKernel {
  std::uint32_t kind;       ///< a KernelKind
  std::uint32_t softening;  ///< sixteenths of a pixel by which the first zero moves out
  std::uint32_t lobes;      ///< of the second sinc of kTwoSincs
};

/// Fills taps 0..taps - 1 of every phase. The shape is one that IsBankShape accepts.
void DesignResamplingBank(const ResamplingKernel& kernel, int taps, int precisionBits, std::int16_t (*bank)[kMaxTaps]);

}  // namespace vidproc::filters
