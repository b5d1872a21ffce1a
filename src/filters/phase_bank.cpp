// Scaling, rounding and residues of one phase of a polyphase bank.
#include "filters/phase_bank.h"

#include <algorithm>
#include <limits>
#include <numeric>

namespace vidproc::filters {
namespace {

constexpr int kPeakLimit = 100;

// Truncates toward zero; what no 32-bit integer can hold, NaN included, becomes the most negative one.
std::int32_t Truncate(double value) {
  if (value > -2147483649.0 && value < 2147483648.0) return static_cast<std::int32_t>(value);
  return std::numeric_limits<std::int32_t>::min();
}

void AddWrapped(std::int16_t& coefficient, std::int32_t amount) {
  coefficient = static_cast<std::int16_t>(coefficient + amount);
}

// Scales the phase so that its largest coefficient is at most kPeakLimit; false when it was already.
bool LimitPeak(std::int16_t* begin, std::int16_t* end) {
  const int peak = *std::max_element(begin, end);
  if (peak <= kPeakLimit) return false;
  const double factor = static_cast<double>(kPeakLimit) / peak;
  for (std::int16_t* c = begin; c != end; ++c) *c = static_cast<std::int16_t>(Truncate(*c * factor));
  return true;
}

// Scales the samples to a sum of `total` and rounds each; their rounded sum misses `total` by the residue.
void RoundSamples(const double* samples, int taps, std::int32_t total, std::int16_t* coefficients) {
  const double sum = std::accumulate(samples, samples + taps, 0.0);
  for (int tap = 0; tap < taps; ++tap) {
    coefficients[tap] = static_cast<std::int16_t>(Truncate(total * samples[tap] / sum + 0.5));
  }
}

std::int32_t Residue(const std::int16_t* coefficients, int taps, std::int32_t total) {
  return total - std::accumulate(coefficients, coefficients + taps, std::int32_t{0});
}

}  // namespace

void QuantisePhase(const double* samples, int phase, int taps, int precisionBits, PeakRule peakRule,
                   std::int16_t* coefficients) {
  const std::int32_t total = 1 << precisionBits;
  RoundSamples(samples, taps, total, coefficients);
  const bool limited = peakRule == PeakRule::kAtMost100 && phase != 0 && LimitPeak(coefficients, coefficients + taps);
  const std::int32_t residue = Residue(coefficients, taps, total);
  const int centre = CentreTap(taps);
  if (phase == 0) {
    AddWrapped(coefficients[centre], residue);
  } else if (limited || phase == kPhases / 2) {
    // kept: an odd residue leaves the phase one short or one over.
    AddWrapped(coefficients[centre], residue / 2);
    AddWrapped(coefficients[centre + 1], residue / 2);
  } else {
    // kept: the residue goes to the tap farthest from the peak.
    AddWrapped(coefficients[phase < kPhases / 2 ? taps - 1 : 0], residue);
  }
}

}  // namespace vidproc::filters
