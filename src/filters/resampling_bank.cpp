// The order of the operations is part of the result: a coefficient may lie so near a rounding border that another order
// moves it.
#include "filters/resampling_bank.h"

#include <cmath>

namespace vidproc::filters {
namespace {

// kept: every coefficient depends on this shortened constant.
constexpr double kPi = 3.1415926;

// In all kernels d is the distance, and `width` that of the sinc's first zero, in sixteenths of a pixel.

struct TwoSincs {
  double width;
  double lobes;

  // kept: the product is not cut off where the second sinc first reaches zero.
  double operator()(double d) const {
    const double u = kPi * d;
    const double v = u / width;
    return (std::sin(v) / u * width * lobes) * (std::sin(v / lobes) / u * width);
  }
};

struct HammingSinc {
  double width;
  double reach;

  double operator()(double d) const {
    const double u = d * kPi;
    return std::sin(u / width) / u * width * (std::cos((d + reach) * kPi / reach) * -0.46 + 0.54);
  }
};

struct Gaussian {
  double divisor;

  double operator()(double d) const { return std::exp(-(d * d / divisor)); }
};

// One pixel, more with softening (kept: that sum may wrap).
double FirstZero(std::uint32_t softening) {
  const std::uint32_t softened = softening + kPhases;
  return softened > kPhases ? softened : kPhases;
}

}  // namespace

void DesignResamplingBank(const ResamplingKernel& kernel, int taps, int precisionBits, std::int16_t (*bank)[kMaxTaps]) {
  const double width = FirstZero(kernel.softening);
  const auto design = [=](auto continuous) { DesignBank(continuous, taps, precisionBits, PeakRule::kAtMost100, bank); };
  switch (kernel.kind) {
    case kTwoSincs:
      design(TwoSincs{width, static_cast<double>(kernel.lobes)});
      break;
    case kHammingSinc:
      design(HammingSinc{width, static_cast<double>(KernelReach(taps))});
      break;
    default:
      // kept: any softening at all quadruples the divisor.
      design(Gaussian{(kernel.softening == 0 ? 2 : 8) * width});
      break;
  }
}

}  // namespace vidproc::filters
