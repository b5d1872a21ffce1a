// Phases 0 to 8 are designed, the others are their mirrors. All sums run in one fixed order, so that a coefficient
// near a rounding border falls to the same side everywhere.
#include "filters/scaling_bank.h"

#include <algorithm>
#include <cmath>

#include "filters/automatic_filter.h"
#include "filters/kernel_shape.h"

namespace vidproc::filters {
namespace {

bool IsScalingBank(const ScalingFilter& filter, int up, int down, int taps, int precisionBits) {
  return up > 0 && down > 0 && (taps == 4 || taps == 8 || taps == 16) && (precisionBits == 6 || precisionBits == 7) &&
         filter.sharpening <= kMaxSharpening &&
         (filter.kernel != ScalingKernel::kDescribed || IsKernelKind(filter.described.kind));
}

KernelShape Shape(ScalingKernel kernel, int up, int down, int taps) {
  const double ratio = up >= down ? 1.0 : static_cast<double>(down) / up;
  const double reach = taps / 2.0;
  // A kernel with side lobes keeps its first zero within the taps; the triangle is held whole.
  const double stretch = std::min(ratio, reach - 0.5);
  switch (kernel) {
    case ScalingKernel::kAutomatic:
      return AutomaticShape(kAutomaticRule, up, down, taps);
    case ScalingKernel::kBilinear:
      return Triangle(std::min(ratio, reach));
    case ScalingKernel::kCatmullRom:
      return Cubic(0, 0.5, stretch);
    case ScalingKernel::kMitchell:
      return Cubic(1.0 / 3, 1.0 / 3, stretch);
    case ScalingKernel::kLanczos:
      return Lanczos(taps == 4 ? 2 : 3, stretch);
    case ScalingKernel::kArea:
      return Box(std::min(ratio, 2 * reach - 1));
    default:
      return Triangle(1);
  }
}

// Tap t becomes itself plus sharpening/16 x (2 t - its neighbours), the end taps repeated: the sum stays.
void Sharpen(double* samples, int used, std::uint32_t sharpening) {
  double sharpened[kMaxTaps];
  for (int t = 0; t < used; ++t) {
    const double neighbours = samples[std::max(t - 1, 0)] + samples[std::min(t + 1, used - 1)];
    sharpened[t] = samples[t] + (2 * samples[t] - neighbours) * sharpening / 16;
  }
  std::copy_n(sharpened, used, samples);
}

// Scales the samples to a sum of `total` and rounds them down; what is then missing goes, one each, to the taps with
// the largest remainders. Of equal remainders the first tap takes it; taps of a symmetric phase take it in pairs, and
// an odd one goes to the tap in the middle.
void RoundToSum(const double* samples, int used, bool symmetric, int total, std::int16_t* coefficients) {
  double sum = 0;
  for (int t = 0; t < used; ++t) sum += samples[t];
  double remainders[kMaxTaps];
  int missing = total;
  for (int t = 0; t < used; ++t) {
    const double exact = total * samples[t] / sum;
    coefficients[t] = static_cast<std::int16_t>(std::floor(exact));
    remainders[t] = exact - coefficients[t];
    missing -= coefficients[t];
  }
  if (symmetric && missing % 2 != 0) {
    ++coefficients[used / 2];
    --missing;
  }
  const int candidates = symmetric ? used / 2 : used;
  while (missing > 0) {
    const auto tap = std::max_element(remainders, remainders + candidates) - remainders;
    remainders[tap] = -1;
    ++coefficients[tap];
    --missing;
    if (!symmetric) continue;
    ++coefficients[used - 1 - tap];
    --missing;
  }
}

void MirrorPhases(int taps, Bank& bank) {
  for (int phase = 1; phase < kPhases / 2; ++phase) {
    std::reverse_copy(bank[phase], bank[phase] + taps, bank[kPhases - phase]);
  }
}

// From the samples of a phase to its coefficients. Phase 0 leaves out its last tap, which has no mirror.
void FinishPhase(double* samples, int phase, std::uint32_t sharpening, int taps, int precisionBits,
                 std::int16_t* coefficients) {
  const int used = phase == 0 ? taps - 1 : taps;
  Sharpen(samples, used, sharpening);
  RoundToSum(samples, used, phase % (kPhases / 2) == 0, 1 << precisionBits, coefficients);
}

void DesignDescribedBank(const ScalingFilter& filter, int taps, int precisionBits, Bank& bank) {
  std::fill_n(&bank[0][0], kPhases * kMaxTaps, std::int16_t{0});
  DesignResamplingBank(filter.described, taps, precisionBits, bank);
  if (filter.sharpening == 0) return;
  for (int phase = 0; phase <= kPhases / 2; ++phase) {
    double samples[kMaxTaps];
    std::copy_n(bank[phase], taps, samples);
    FinishPhase(samples, phase, filter.sharpening, taps, precisionBits, bank[phase]);
  }
  MirrorPhases(taps, bank);
}

}  // namespace

void DesignShapeBank(const KernelShape& shape, std::uint32_t sharpening, int taps, int precisionBits, Bank& bank) {
  std::fill_n(&bank[0][0], kPhases * kMaxTaps, std::int16_t{0});
  for (int phase = 0; phase <= kPhases / 2; ++phase) {
    double samples[kMaxTaps];
    for (int t = 0; t < taps; ++t) {
      samples[t] = SampleShape(shape, t - CentreTap(taps) - static_cast<double>(phase) / kPhases);
    }
    FinishPhase(samples, phase, sharpening, taps, precisionBits, bank[phase]);
  }
  MirrorPhases(taps, bank);
}

bool DesignScalingBank(const ScalingFilter& filter, int up, int down, int taps, int precisionBits, Bank& bank) {
  if (!IsScalingBank(filter, up, down, taps, precisionBits)) return false;
  if (filter.kernel == ScalingKernel::kDescribed) {
    DesignDescribedBank(filter, taps, precisionBits, bank);
  } else {
    DesignShapeBank(Shape(filter.kernel, up, down, taps), filter.sharpening, taps, precisionBits, bank);
  }
  return true;
}

bool FitsSignedBytes(const std::int16_t* phase, int taps) {
  const auto fits = [](int c) { return c >= -127 && c <= 127; };
  if (std::all_of(phase, phase + taps, fits)) return true;
  return std::count(phase, phase + taps, 0) == taps - 1 && std::count(phase, phase + taps, 128) == 1;
}

}  // namespace vidproc::filters
