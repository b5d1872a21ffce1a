// The resampling and deblocking banks of the object, written plainly: a prototype sampled every sixteenth of a pixel,
// and the phases read from it.
#pragma once

#include <array>
#include <cstdint>

namespace reference {

/// [phase][tap]; 0 beyond the taps in use.
using FilterBank = std::array<std::array<int, 16>, 16>;

struct ResamplingDesign {
  std::uint32_t kind;  ///< 0 product of two sincs, 1 Hamming-windowed sinc, 2 Gaussian
  std::uint32_t softening;
  std::uint32_t lobes;
  int taps;
  int precisionBits;
};
FilterBank MakeResamplingBank(const ResamplingDesign& design);

FilterBank MakeDeblockingBank(int level, int taps, int precisionBits);

/// Every phase weighted by the column sums of a 3x3 kernel, in sixteenths, and brought back to a sum of `total`.
FilterBank Enhance(const FilterBank& bank, const std::array<int, 3>& columnSums, int taps, int total);

/// The bank of one direction: the first `enhancedPhases` phases with the kernel of four neighbours of `strength`.
FilterBank MakeScalerBank(const ResamplingDesign& design, int strength, int enhancedPhases);

}  // namespace reference
