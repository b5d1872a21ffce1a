#include "plan/exactness.h"

#include "levels/general_forms.h"
#include "plan/phase_position.h"

namespace vidproc {
namespace {

constexpr int kMaxByte = 255;

bool IsIdentity(const TapBank& bank, int phase, int unity) {
  return bank.tapCount[phase] == 1 && bank.coefficient[phase][bank.firstTap[phase]] == unity;
}

/// Non-negative taps that add up to at most `unity` turn bytes into bytes.
bool KeepsBytes(const TapBank& bank, int phase, int unity) {
  int sum = 0;
  for (int tap = 0; tap < bank.taps; ++tap) {
    const int coefficient = bank.coefficient[phase][tap];
    if (coefficient < 0 || (coefficient > 127 && !IsIdentity(bank, phase, unity))) return false;
    sum += coefficient;
  }
  return sum <= unity;
}

/// Signed byte taps whose sums of bytes, and `rounding` added, stay inside 16 bits in any order.
bool SumsFitWords(const std::int16_t* coefficients, int count, int rounding) {
  int positive = 0;
  int negative = 0;
  for (int tap = 0; tap < count; ++tap) {
    const int coefficient = coefficients[tap];
    if (coefficient < -128 || coefficient > 127) return false;
    (coefficient > 0 ? positive : negative) += coefficient;
  }
  return positive * kMaxByte + rounding <= INT16_MAX && negative * kMaxByte >= INT16_MIN;
}

/// The centre tap takes what is left of 128, whatever the bank says.
bool OuterTapsFitBytes(const TapBank& bank, int phase) {
  int sum = 0;
  for (int tap = 0; tap < bank.taps; ++tap) {
    if (tap == bank.taps / 2 - 1) continue;
    const int coefficient = bank.coefficient[phase][tap];
    if (coefficient < 0 || coefficient > 127) return false;
    sum += coefficient;
  }
  return sum <= 128;
}

bool WeighsItsCoefficients(const TapBank& bank, int phase) {
  int sum = 0;
  for (int tap = 0; tap < bank.taps; ++tap) {
    const int coefficient = bank.coefficient[phase][tap];
    if (tap != bank.taps / 2 - 1 && (coefficient < -128 || coefficient > 127)) return false;
    sum += coefficient;
  }
  return sum == 128;
}

}  // namespace

bool ByteRowsAreExact(const TapBank& vertical, const TapBank& horizontal, std::int32_t precisionBits) {
  const int unity = 1 << precisionBits;
  for (int phase = 0; phase < kPhases; ++phase) {
    if (HasPhase(vertical.usedPhases, phase) && !KeepsBytes(vertical, phase, unity)) return false;
    if (!HasPhase(horizontal.usedPhases, phase) || IsIdentity(horizontal, phase, unity)) continue;
    if (!SumsFitWords(horizontal.coefficient[phase], horizontal.taps, unity / 2)) return false;
  }
  return true;
}

bool ByteColumnsAreExact(const TapBank& vertical, const TapBank& horizontal) {
  for (int phase = 0; phase < kPhases; ++phase) {
    if (HasPhase(vertical.usedPhases, phase) && !OuterTapsFitBytes(vertical, phase)) return false;
    if (HasPhase(horizontal.usedPhases, phase) && !OuterTapsFitBytes(horizontal, phase)) return false;
  }
  return true;
}

bool ByteProductsFitWords(const std::int16_t* coefficients, int count) { return SumsFitWords(coefficients, count, 0); }

bool WeightsAreCoefficients(const TapBank& vertical, const TapBank& horizontal) {
  for (int phase = 0; phase < kPhases; ++phase) {
    if (HasPhase(vertical.usedPhases, phase) && !WeighsItsCoefficients(vertical, phase)) return false;
    if (HasPhase(horizontal.usedPhases, phase) && !WeighsItsCoefficients(horizontal, phase)) return false;
  }
  return true;
}

bool AdaptiveCurveFitsBytes(std::int32_t adaptive) { return adaptive >= 1 && adaptive <= 8; }

bool BlendFitsBytes(std::int32_t strength, std::int32_t shift) { return strength <= 127 && shift <= 7; }

bool TemporalTableIsExact(std::int32_t strength) { return strength <= 127; }

bool SymmetricSumsAreExact(const std::int16_t (&taps)[8]) {
  for (int t = 0; t < 3; ++t) {
    if (taps[t] < 0 || taps[t] != taps[6 - t]) return false;
  }
  return taps[7] == 0 && taps[0] + taps[1] + taps[2] <= 64;
}

Form ChooseForm(bool isExact, bool levelHasIt) {
  return isExact && levelHasIt && !GeneralFormsOnly() ? Form::kProven : Form::kGeneral;
}

}  // namespace vidproc
