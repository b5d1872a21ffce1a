// Polyphase banks from a continuous kernel. Phase q serves an output sample q/16 of a pixel after source sample n; its
// tap t weights source sample n + t - CentreTap(taps). Each phase samples the kernel at its taps and rounds the samples
// to integers that sum to 1 << precisionBits.
#pragma once

#include <cfloat>
#include <cstdint>

namespace vidproc::filters {

// The x87 unit of 32-bit x86, for one, would round a few coefficients otherwise.
static_assert(FLT_EVAL_METHOD >= 0 && FLT_EVAL_METHOD != 2, "filter design needs plain double precision");

inline constexpr int kPhases = 16;
inline constexpr int kMaxTaps = 16;
inline constexpr int kMaxPrecisionBits = 14;
inline constexpr int kLanes = 8;

using Bank = std::int16_t[kPhases][kMaxTaps];

/// Whether a bank with room for `maxTaps` taps can be designed with these.
inline bool IsBankShape(int taps, int maxTaps, int precisionBits) {
  return taps >= 2 && taps <= maxTaps && taps % 2 == 0 && precisionBits >= 0 && precisionBits <= kMaxPrecisionBits;
}

/// The tap of the source sample at which phase 0 lies.
constexpr int CentreTap(int taps) { return taps / 2 - 1; }

/// Distance of a tap from the output sample, in sixteenths of a pixel.
constexpr int TapDistance(int tap, int phase, int taps) { return kPhases * (tap - CentreTap(taps)) - phase; }

/// The farthest distance at which SampleKernel samples, in sixteenths of a pixel.
constexpr int KernelReach(int taps) { return kPhases / 2 * taps - 1; }

/// Samples kernel(d) at the taps of a phase; d is the distance from the output sample in sixteenths of a pixel. At 0,
/// where kernels may be 0 / 0, the sample is 1; beyond KernelReach it is 0.
template <typename Kernel>
void SampleKernel(Kernel kernel, int phase, int taps, double* samples) {
  for (int tap = 0; tap < taps; ++tap) {
    const int d = TapDistance(tap, phase, taps);
    samples[tap] = d == 0 ? 1.0 : d > KernelReach(taps) ? 0.0 : kernel(static_cast<double>(d));
  }
}

enum class PeakRule { kFree, kAtMost100 };

/// Rounds the samples of a phase and adds the residue, so that they sum to 1 << precisionBits. With
/// PeakRule::kAtMost100 a larger coefficient scales the whole phase down first, but for phase 0.
void QuantisePhase(const double* samples, int phase, int taps, int precisionBits, PeakRule peakRule,
                   std::int16_t* coefficients);

/// Fills taps 0..taps - 1 of every phase.
template <typename Kernel, int kRow>
void DesignBank(Kernel kernel, int taps, int precisionBits, PeakRule peakRule, std::int16_t (*bank)[kRow]) {
  for (int phase = 0; phase < kPhases; ++phase) {
    double samples[kRow];
    SampleKernel(kernel, phase, taps, samples);
    QuantisePhase(samples, phase, taps, precisionBits, peakRule, bank[phase]);
  }
}

/// Writes each of the first `taps` coefficients of every phase into eight lanes.
template <int kRow>
void CopyToLanes(const std::int16_t (&bank)[kPhases][kRow], int taps, std::int16_t (&lanes)[kPhases][kRow][kLanes]) {
  for (int phase = 0; phase < kPhases; ++phase) {
    for (int tap = 0; tap < taps; ++tap) {
      for (std::int16_t& lane : lanes[phase][tap]) lane = bank[phase][tap];
    }
  }
}

}  // namespace vidproc::filters
