// Resampling banks: a two-sinc product, a Hamming-windowed sinc or a Gaussian, in double precision. The order of the
// operations is part of the result: a coefficient may lie so near a rounding border that another order moves it.
#include <cmath>
#include <cstdio>
#include <cstdlib>

#include "filters/phase_bank.h"
#include "filters/scaler_config.h"
#include "vidproc/video_processor.h"

namespace {

namespace filters = vidproc::filters;

// kept: every coefficient depends on this shortened constant.
constexpr double kPi = 3.1415926;

}  // namespace

void VideoProcessor::GetFilter(int, int, short (*bank)[16], int taps, int precisionBits, int) {
  if (!filters::IsBankShape(taps, filters::kMaxTaps, precisionBits)) return;

  // Distance of the sinc's first zero in sixteenths of a pixel: one pixel, more with softening (that may wrap).
  const std::uint32_t softened = softenLevel + 16;
  const double width = softened > 16 ? softened : 16;
  const double peak = filters::PeakPosition(taps);
  filters::Prototype prototype;
  switch (windowKind) {
    case filters::kTwoSincs: {
      // kept: the product is not cut off where the second sinc first reaches zero.
      const double lobes = lanczosLobes;
      const auto kernel = [=](double i) {
        const double u = kPi * (i - peak);
        const double v = u / width;
        return (std::sin(v) / u * width * lobes) * (std::sin(v / lobes) / u * width);
      };
      filters::SamplePrototype(taps, kernel, prototype);
      break;
    }
    case filters::kHammingSinc: {
      const auto kernel = [=](double i) {
        const double u = (i - peak) * kPi;
        return std::sin(u / width) / u * width * (std::cos(i * kPi / peak) * -0.46 + 0.54);
      };
      filters::SamplePrototype(taps, kernel, prototype);
      break;
    }
    case filters::kGaussian: {
      // kept: any softening at all quadruples the divisor.
      const double divisor = (softenLevel == 0 ? 2 : 8) * width;
      const auto kernel = [=](double i) {
        const double d = i - peak;
        return std::exp(-(d * d / divisor));
      };
      filters::SamplePrototype(taps, kernel, prototype);
      break;
    }
    default:
      std::puts("Wrong filter type!");
      std::exit(0);
  }
  for (int phase = 0; phase < filters::kPhases; ++phase) {
    filters::DealPhase(prototype, phase, taps, precisionBits, true, bank[phase]);
  }
}
