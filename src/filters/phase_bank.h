// Polyphase banks from a continuous kernel. The kernel is sampled every sixteenth of a pixel (the prototype), and the
// samples are dealt out to sixteen phases, scaled to integers that sum to 1 << precisionBits. Phase q serves an output
// sample q/16 of a pixel after source sample n; its tap t weights source sample n - (taps / 2 - 1) + t.
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

/// Samples 1 to 16 x taps - 1 are in use; the peak is sample 8 x taps.
using Prototype = double[kPhases * kMaxTaps];

inline bool IsBankShape(int taps, int maxTaps, int precisionBits) {
  return taps >= 2 && taps <= maxTaps && taps % 2 == 0 && precisionBits >= 0 && precisionBits <= kMaxPrecisionBits;
}

/// Index of the peak when samples are counted from the first one in use, as the kernels of SamplePrototype count.
inline double PeakPosition(int taps) { return 0.5 * (kPhases * taps - 2); }

/// Samples kernel(i), i counted from the first sample in use. The peak is 1, so that kernels may be 0 / 0 there.
template <typename Kernel>
void SamplePrototype(int taps, Kernel kernel, Prototype& prototype) {
  const int peak = kPhases / 2 * taps;
  for (int i = 0; i < kPhases * taps - 1; ++i) prototype[i + 1] = i + 1 == peak ? 1.0 : kernel(static_cast<double>(i));
}

/// Writes `taps` coefficients of one phase. With limitPeak a coefficient above 100 scales the whole phase down.
void DealPhase(const Prototype& prototype, int phase, int taps, int precisionBits, bool limitPeak,
               std::int16_t* coefficients);

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
