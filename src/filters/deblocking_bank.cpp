#include "filters/deblocking_bank.h"

#include <cmath>

namespace vidproc::filters {

void DesignDeblockingBank(std::uint8_t level, int taps, int precisionBits, std::int16_t (*bank)[kDeblockingTaps]) {
  const double squaredWidth = level * level;
  const auto gaussian = [=](double d) { return std::exp(-(d * d / squaredWidth)); };
  DesignBank(gaussian, taps, precisionBits, PeakRule::kFree, bank);
}

}  // namespace vidproc::filters
