// The proofs that the byte forms are exact, and the layout of shuffles and coefficients along a row.
#include "plan/row_plan.h"

#include <algorithm>
#include <cstring>
#include <numeric>

namespace vidproc {
namespace {

constexpr int kCentreTap = 3;
constexpr int kMaxTapPairs = 4;
constexpr int kMaxVectorBytes = 64;

/// Lowest and highest tap that is not zero in any used phase.
struct TapSpan {
  int first = kMaxTaps;
  int last = 0;
};

bool UsesPhase(const TapBank& bank, int phase) { return (bank.usedPhases >> phase & 1) != 0; }

TapSpan SpanOf(const TapBank& bank) {
  TapSpan span;
  for (int phase = 0; phase < kPhases; ++phase) {
    if (!UsesPhase(bank, phase)) continue;
    span.first = std::min(span.first, bank.firstTap[phase]);
    span.last = std::max(span.last, bank.firstTap[phase] + bank.tapCount[phase] - 1);
  }
  return span;
}

int PairsOf(const TapSpan& span) { return (span.last - span.first) / 2 + 1; }

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

/// Signed byte taps whose sums of bytes stay inside 16 bits, rounding included, in any order.
bool KeepsWords(const TapBank& bank, int phase, int unity) {
  int positive = 0;
  int negative = 0;
  for (int tap = 0; tap < bank.taps; ++tap) {
    const int coefficient = bank.coefficient[phase][tap];
    if (coefficient < -128 || coefficient > 127) return false;
    (coefficient > 0 ? positive : negative) += coefficient;
  }
  return positive * 255 + unity / 2 <= 32767 && negative * 255 >= -32768;
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

struct Layout {
  const TapBank& bank;
  TapSpan span;
  Ratio ratio;
  ByteRowShape shape;
};

/// One vector of a grid whose samples lie `sampleBytes` apart: 1 for luma; 2 for chroma, whose Cb and Cr share a place.
void LayOutVector(const Layout& layout, int pairs, int sampleBytes, std::int32_t firstOutput, std::uint8_t* pattern,
                  std::int32_t* windows) {
  const ByteRowShape& shape = layout.shape;
  const int resultsPerWindow = shape.windowBytes / 2;
  for (int lane = 0; lane < shape.vectorBytes / 2; ++lane) {
    const PhasePosition position = LocatePhase(firstOutput + lane / sampleBytes, layout.ratio);
    const std::int32_t byte = (position.source - kCentreTap + layout.span.first) * sampleBytes + lane % sampleBytes;
    if (lane % resultsPerWindow == 0) windows[lane / resultsPerWindow] = byte;
    const std::int16_t* taps = layout.bank.coefficient[position.phase];
    const auto index = static_cast<std::uint8_t>(byte - windows[lane / resultsPerWindow]);
    pattern[2 * lane] = index;
    pattern[2 * lane + 1] = static_cast<std::uint8_t>(index + sampleBytes);
    std::uint8_t* coefficients = pattern + shape.vectorBytes + 2 * lane;
    if (taps[layout.span.first] == 128 || taps[std::min(layout.span.first + 1, kMaxTaps - 1)] == 128) {
      // Unity does not fit a signed byte: half of it, twice, on the same sample.
      const int which = taps[layout.span.first] == 128 ? 0 : sampleBytes;
      pattern[2 * lane] = pattern[2 * lane + 1] = static_cast<std::uint8_t>(index + which);
      coefficients[0] = coefficients[1] = 64;
      continue;
    }
    for (int pair = 0; pair < pairs; ++pair, coefficients += shape.vectorBytes) {
      for (int i = 0; i < 2; ++i) {
        const int tap = layout.span.first + 2 * pair + i;
        coefficients[i] = static_cast<std::uint8_t>(tap < kMaxTaps ? taps[tap] : 0);
      }
    }
  }
}

/// Outputs per vector, and vectors until the pattern repeats.
void LayOutGrid(const Layout& layout, int pairs, int sampleBytes, std::int32_t outputs, std::uint8_t*& memory,
                ByteRowGrid& grid) {
  const ByteRowShape& shape = layout.shape;
  const std::int32_t perVector = shape.vectorBytes / 2 / sampleBytes;
  const std::int32_t vectorsOfRow = (outputs + 2 * perVector - 1) / (2 * perVector) * 2;
  const std::int32_t period = layout.ratio.up / std::gcd(layout.ratio.up, perVector);
  grid.vectors = std::min(period, vectorsOfRow);
  const std::int64_t advance = std::int64_t{period} * perVector * layout.ratio.down / layout.ratio.up * sampleBytes;
  grid.advance = period < vectorsOfRow ? static_cast<std::int32_t>(advance) : 0;
  const int windowsPerVector = shape.vectorBytes / shape.windowBytes;
  auto* const windows = reinterpret_cast<std::int32_t*>(memory);
  memory += (static_cast<std::size_t>(grid.vectors * windowsPerVector) * sizeof(std::int32_t) + kMaxVectorBytes - 1) /
            kMaxVectorBytes * kMaxVectorBytes;
  grid.windows = windows;
  grid.patterns = memory;
  for (std::int32_t v = 0; v < grid.vectors; ++v) {
    LayOutVector(layout, pairs, sampleBytes, v * perVector, memory, windows + v * windowsPerVector);
    memory += shape.vectorBytes * (1 + pairs);
  }
}

}  // namespace

bool ByteRowScalerIsExact(const TapBank& vertical, const TapBank& horizontal, std::int32_t precisionBits,
                          const Ratio& ratio) {
  if (ratio.down > 2 * std::int64_t{ratio.up}) return false;
  const int unity = 1 << precisionBits;
  const int pairs = PairsOf(SpanOf(horizontal));
  if (pairs > kMaxTapPairs) return false;
  for (int phase = 0; phase < kPhases; ++phase) {
    if (UsesPhase(vertical, phase) && !KeepsBytes(vertical, phase, unity)) return false;
    if (!UsesPhase(horizontal, phase) || KeepsWords(horizontal, phase, unity)) continue;
    if (pairs > 1 || unity != 128 || !IsIdentity(horizontal, phase, unity)) return false;
  }
  return true;
}

bool AdaptiveBytesAreExact(const TapBank& vertical, const TapBank& horizontal) {
  for (int phase = 0; phase < kPhases; ++phase) {
    if (UsesPhase(vertical, phase) && !OuterTapsFitBytes(vertical, phase)) return false;
    if (UsesPhase(horizontal, phase) && !OuterTapsFitBytes(horizontal, phase)) return false;
  }
  return true;
}

std::uint64_t ByteRowPlanBytes(std::uint64_t outWidth) {
  // For every 8 results of either grid: 16 bytes of indices, as many of coefficients for each pair of taps, and at most
  // 8 of windows. A row of results is rounded up to two vectors; the rest is more than the widest ones need for that.
  const std::uint64_t vectors = outWidth / 8 + 8;
  return 2 * vectors * (16 * (1 + kMaxTapPairs) + 8) + 16 * kMaxVectorBytes * (1 + kMaxTapPairs);
}

void LayOutByteRowPlan(const TapBank& bank, const Ratio& ratio, std::int32_t outWidth, const ByteRowShape& shape,
                       std::uint8_t* memory, ByteRowPlan& plan) {
  const Layout layout{bank, SpanOf(bank), ratio, shape};
  plan.tapPairs = PairsOf(layout.span);
  LayOutGrid(layout, plan.tapPairs, 1, outWidth, memory, plan.luma);
  LayOutGrid(layout, plan.tapPairs, 2, (outWidth + 1) / 2, memory, plan.chroma);
}

}  // namespace vidproc
