// Scaler configuration. The 3x3 enhancement kernel is folded into the banks one-dimensionally: its column sums weight
// each coefficient and its two neighbours (the ends repeated), in sixteenths; then the phase is brought back to its
// sum.
#include "filters/scaler_config.h"

#include <algorithm>
#include <cstring>
#include <iterator>

#include "filters/phase_bank.h"

namespace vidproc::filters {
namespace {

using Bank = std::int16_t[kPhases][kMaxTaps];

void BuildEnhanceKernel(EnhanceFilterTypes type, std::uint32_t strength, std::int16_t (&kernel)[3][3]) {
  struct Shape {
    std::uint32_t centre, edge, corner;  // factors of the strength, modulo 2^32
  };
  static constexpr Shape kShapes[] = {{4, 0u - 1, 0}, {8, 0u - 1, 0u - 1}, {4, 0u - 2, 1}};
  if (type >= std::size(kShapes)) return;
  const Shape& shape = kShapes[type];
  const auto centre = static_cast<std::int16_t>(shape.centre * strength + 16);
  const auto edge = static_cast<std::int16_t>(shape.edge * strength);
  const auto corner = static_cast<std::int16_t>(shape.corner * strength);
  for (int row = 0; row < 3; ++row) {
    for (int column = 0; column < 3; ++column) {
      const int fromCentre = (row != 1) + (column != 1);
      kernel[row][column] = fromCentre == 0 ? centre : fromCentre == 1 ? edge : corner;
    }
  }
}

// Wraps where the quotient does not fit; the divisor is not 0.
std::int32_t Divide(std::int32_t dividend, std::int32_t divisor) {
  if (divisor == -1) return static_cast<std::int32_t>(0u - static_cast<std::uint32_t>(dividend));
  return dividend / divisor;
}

// Brings the phase to the sum `total`; the rounding residue goes to the first of its largest coefficients.
void Renormalise(std::int16_t* phase, int taps, std::int32_t total) {
  std::int32_t oldSum = 0;
  for (int tap = 0; tap < taps; ++tap) oldSum += phase[tap];
  if (oldSum == 0) return;
  std::int32_t newSum = 0;
  int largest = 0;
  std::int16_t largestValue = 0;
  for (int tap = 0; tap < taps; ++tap) {
    const std::uint32_t scaled = static_cast<std::uint32_t>(phase[tap]) * static_cast<std::uint32_t>(total);
    const std::uint32_t dividend = static_cast<std::uint32_t>(oldSum / 2) + scaled;
    phase[tap] = static_cast<std::int16_t>(Divide(static_cast<std::int32_t>(dividend), oldSum));
    newSum += phase[tap];
    if (phase[tap] > largestValue) {
      largest = tap;
      largestValue = phase[tap];
    }
  }
  const std::uint32_t residue = static_cast<std::uint32_t>(total) - static_cast<std::uint32_t>(newSum);
  phase[largest] = static_cast<std::int16_t>(static_cast<std::uint32_t>(phase[largest]) + residue);
}

void Fold(const std::int16_t (&kernel)[3][3], int taps, std::int32_t total, const Bank& bank, Bank& enhanced) {
  std::uint32_t weights[3];
  for (int column = 0; column < 3; ++column) {
    weights[column] = static_cast<std::uint32_t>(kernel[0][column] + kernel[1][column] + kernel[2][column]);
  }
  for (int phase = 0; phase < kPhases; ++phase) {
    for (int tap = 0; tap < taps; ++tap) {
      std::uint32_t sum = 8;
      for (int column = 0; column < 3; ++column) {
        const int neighbour = std::clamp(tap - 1 + column, 0, taps - 1);
        sum += weights[column] * static_cast<std::uint32_t>(bank[phase][neighbour]);
      }
      enhanced[phase][tap] = static_cast<std::int16_t>(static_cast<std::int32_t>(sum) / 16);
    }
    Renormalise(enhanced[phase], taps, total);
  }
}

// kept: as many phases are enhanced as the horizontal bank has taps, so with 8 taps the upper half stays as designed.
void TakeEnhancedPhases(const Bank& enhanced, int horizontalTaps, Bank& bank) {
  std::memcpy(bank, enhanced, static_cast<std::size_t>(horizontalTaps) * sizeof(bank[0]));
}

}  // namespace

void ConfigureScaler(VideoProcessor& p, EnhanceFilterTypes type, std::uint32_t strength, std::uint32_t precisionBits) {
  p.enhanceType = type;
  p.enhanceStrength = strength;
  BuildEnhanceKernel(type, strength, p.enhanceKernel);

  p.FindUpAndDown(static_cast<int>(p.inWidth), static_cast<int>(p.outWidth), &p.horizontalUp, &p.horizontalDown);
  p.FindUpAndDown(static_cast<int>(p.inHeight), static_cast<int>(p.outHeight), &p.verticalUp, &p.verticalDown);

  const int horizontalTaps = p.use16Taps != 0 ? 16 : 8;
  const int verticalTaps = horizontalTaps / 2;
  const int bits = static_cast<int>(precisionBits);
  p.GetFilter(p.horizontalUp, p.horizontalDown, p.horizontalFilter, horizontalTaps, bits, 0);
  p.GetFilter(p.verticalUp, p.verticalDown, p.verticalFilter, verticalTaps, bits, 0);

  const auto total = static_cast<std::int32_t>(1u << (precisionBits % 32));
  if (p.enhanceHorizontal != 0) {
    Fold(p.enhanceKernel, horizontalTaps, total, p.horizontalFilter, p.horizontalEnhancedFilter);
    TakeEnhancedPhases(p.horizontalEnhancedFilter, horizontalTaps, p.horizontalFilter);
  }
  if (p.enhanceVertical != 0) {
    Fold(p.enhanceKernel, verticalTaps, total, p.verticalFilter, p.verticalEnhancedFilter);
    TakeEnhancedPhases(p.verticalEnhancedFilter, horizontalTaps, p.verticalFilter);
  }
  CopyToLanes(p.verticalFilter, verticalTaps, p.verticalFilterLanes);
  CopyToLanes(p.horizontalFilter, horizontalTaps, p.horizontalFilterLanes);
}

}  // namespace vidproc::filters

void VideoProcessor::FindUpAndDown(int inSize, int outSize, int* up, int* down) {
  // 64 bits: sizes beyond 2^31 arrive as negative numbers, and the most negative one has no 32-bit quotient by -1.
  std::int64_t divisor = std::max(inSize, outSize);
  for (std::int64_t rest = std::min(inSize, outSize); rest != 0;) {
    const std::int64_t remainder = divisor % rest;
    divisor = rest;
    rest = remainder;
  }
  *up = divisor == 0 ? 0 : static_cast<int>(outSize / divisor);
  *down = divisor == 0 ? 0 : static_cast<int>(inSize / divisor);
}
