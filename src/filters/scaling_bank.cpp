// Phases 0 to 8 are designed, the others are their mirrors. All sums run in one fixed order, so that a coefficient
// near a rounding border falls to the same side everywhere.
#include "filters/scaling_bank.h"

#include <algorithm>
#include <cmath>

#include "filters/automatic_filter.h"
#include "filters/kernel_shape.h"

namespace vidproc::filters {
namespace {

bool IsScalingBank(const ScalingDesign& filter, int up, int down, int taps, int precisionBits) {
  return up > 0 && down > 0 && (taps == 4 || taps == 8 || taps == 16) && (precisionBits == 6 || precisionBits == 7) &&
         filter.sharpening <= kMaxSharpening &&
         (filter.kernel != ScalingKernel::kFixedWidth || IsKernelKind(filter.fixedWidth.kind));
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

// Brings the centroid of the samples to the output sample, each sample giving by its weight: zeros stay zeros.
void Centre(double* samples, int phase, int taps) {
  double moment = 0, weight = 0, weightedMean = 0, variance = 0;
  for (int t = 0; t < taps; ++t) {
    moment += samples[t] * TapDistance(t, phase, taps);
    weight += std::abs(samples[t]);
    weightedMean += std::abs(samples[t]) * TapDistance(t, phase, taps);
  }
  weightedMean /= weight;
  for (int t = 0; t < taps; ++t) {
    const double deviation = TapDistance(t, phase, taps) - weightedMean;
    variance += std::abs(samples[t]) * deviation * deviation;
  }
  for (int t = 0; t < taps; ++t) {
    samples[t] -= moment / variance * std::abs(samples[t]) * (TapDistance(t, phase, taps) - weightedMean);
  }
}

struct RoundedPhase {
  std::int16_t* coefficients;
  double remainders[kMaxTaps];  // of the exact coefficients; less 1 where the coefficient is rounded up

  void Add(std::ptrdiff_t tap, int amount) {
    coefficients[tap] = static_cast<std::int16_t>(coefficients[tap] + amount);
    remainders[tap] -= amount;
  }
};

// Scales the samples to a sum of `total` and rounds them down; what is then missing goes, one each, to the taps with
// the largest remainders. Of equal remainders the first tap takes it; taps of a symmetric phase take it in pairs, and
// an odd one goes to the tap in the middle.
void RoundToSum(const double* samples, int used, bool symmetric, int total, RoundedPhase& phase) {
  double sum = 0;
  for (int t = 0; t < used; ++t) sum += samples[t];
  int missing = total;
  for (int t = 0; t < used; ++t) {
    const double exact = total * samples[t] / sum;
    phase.coefficients[t] = static_cast<std::int16_t>(std::floor(exact));
    phase.remainders[t] = exact - phase.coefficients[t];
    missing -= phase.coefficients[t];
  }
  if (symmetric && missing % 2 != 0) {
    phase.Add(used / 2, 1);
    --missing;
  }
  const int candidates = symmetric ? used / 2 : used;
  for (; missing > 0; missing -= symmetric ? 2 : 1) {
    const auto tap = std::max_element(phase.remainders, phase.remainders + candidates) - phase.remainders;
    phase.Add(tap, 1);
    if (symmetric) phase.Add(used - 1 - tap, 1);
  }
}

// Where rounding has moved the centroid, units go from one tap to another until it is back at the output sample, each
// time between the two taps that this rounds best: a phase that all samples share, as left-sited chroma at 2:1, would
// otherwise move the picture a little further in every generation.
void Recentre(const double* samples, int phaseIndex, int taps, RoundedPhase& phase) {
  for (;;) {
    int moment = 0;
    for (int t = 0; t < taps; ++t) moment += phase.coefficients[t] * TapDistance(t, phaseIndex, taps);
    if (moment == 0) return;
    int bestFrom = -1, bestTo = -1;
    double leastError = 0;
    for (int from = 0; from < taps; ++from) {
      for (int to = 0; to < taps; ++to) {
        const double error = phase.remainders[from] - phase.remainders[to];
        const bool helps = std::abs(moment + kPhases * (to - from)) < std::abs(moment);
        if (!helps || samples[from] == 0 || samples[to] == 0 || (bestTo >= 0 && error >= leastError)) continue;
        bestFrom = from;
        bestTo = to;
        leastError = error;
      }
    }
    if (bestTo < 0) return;
    phase.Add(bestFrom, -1);
    phase.Add(bestTo, 1);
  }
}

void MirrorPhases(int taps, Bank& bank) {
  for (int phase = 1; phase < kPhases / 2; ++phase) {
    std::reverse_copy(bank[phase], bank[phase] + taps, bank[kPhases - phase]);
  }
}

enum class Centroid { kFree, kAtOutputSample };

// From the samples of a phase to its coefficients. Phase 0 leaves out its last tap, which has no mirror.
void FinishPhase(double* samples, int phase, std::uint32_t sharpening, Centroid centroid, int taps, int precisionBits,
                 std::int16_t* coefficients) {
  const int used = phase == 0 ? taps - 1 : taps;
  const int total = 1 << precisionBits;
  const bool symmetric = phase % (kPhases / 2) == 0;
  const bool centred = centroid == Centroid::kAtOutputSample && !symmetric;
  RoundedPhase rounded = {coefficients, {}};
  Sharpen(samples, used, sharpening);
  if (centred) Centre(samples, phase, taps);
  RoundToSum(samples, used, symmetric, total, rounded);
  if (centred) Recentre(samples, phase, taps, rounded);
}

void DesignFixedWidthBank(const ScalingDesign& filter, int taps, int precisionBits, Bank& bank) {
  std::fill_n(&bank[0][0], kPhases * kMaxTaps, std::int16_t{0});
  DesignResamplingBank(filter.fixedWidth, taps, precisionBits, bank);
  if (filter.sharpening == 0) return;
  for (int phase = 0; phase <= kPhases / 2; ++phase) {
    double samples[kMaxTaps];
    std::copy_n(bank[phase], taps, samples);
    FinishPhase(samples, phase, filter.sharpening, Centroid::kFree, taps, precisionBits, bank[phase]);
  }
  MirrorPhases(taps, bank);
}

}  // namespace

void DesignShapeBank(const KernelShape& shape, std::uint32_t sharpening, int taps, int precisionBits, Bank& bank) {
  std::fill_n(&bank[0][0], kPhases * kMaxTaps, std::int16_t{0});
  // A mean of covered samples would not be one with other weights.
  const Centroid centroid =
      shape.family == KernelFamily::kBox && shape.width > 1 ? Centroid::kFree : Centroid::kAtOutputSample;
  for (int phase = 0; phase <= kPhases / 2; ++phase) {
    double samples[kMaxTaps];
    for (int t = 0; t < taps; ++t) {
      samples[t] = SampleShape(shape, TapDistance(t, phase, taps) / static_cast<double>(kPhases));
    }
    FinishPhase(samples, phase, sharpening, centroid, taps, precisionBits, bank[phase]);
  }
  MirrorPhases(taps, bank);
}

bool DesignScalingBank(const ScalingDesign& filter, int up, int down, int taps, int precisionBits, Bank& bank) {
  if (!IsScalingBank(filter, up, down, taps, precisionBits)) return false;
  if (filter.kernel == ScalingKernel::kFixedWidth) {
    DesignFixedWidthBank(filter, taps, precisionBits, bank);
  } else {
    DesignShapeBank(Shape(filter.kernel, up, down, taps), filter.sharpening, taps, precisionBits, bank);
  }
  return true;
}

}  // namespace vidproc::filters
