#include "plan/byte_row_layout.h"

#include <algorithm>
#include <numeric>

namespace vidproc {
namespace {

constexpr int kMaxTapPairs = kMaxTaps / 2;
constexpr int kMaxVectorBytes = 64;
constexpr int kUnity = 128;

/// First and last tap that some used phase weighs.
struct TapSpan {
  int first = kMaxTaps;
  int last = 0;
};

TapSpan SpanOf(const TapBank& bank) {
  TapSpan span;
  for (int phase = 0; phase < kPhases; ++phase) {
    if (!HasPhase(bank.usedPhases, phase)) continue;
    span.first = std::min(span.first, bank.firstTap[phase]);
    span.last = std::max(span.last, bank.firstTap[phase] + bank.tapCount[phase] - 1);
  }
  return span;
}

int PairsOf(const TapSpan& span) { return (span.last - span.first) / 2 + 1; }

bool NeedsUnity(const TapBank& bank) {
  for (int phase = 0; phase < kPhases; ++phase) {
    if (HasPhase(bank.usedPhases, phase) && bank.coefficient[phase][bank.firstTap[phase]] == kUnity) return true;
  }
  return false;
}

struct Layout {
  const TapBank& bank;
  TapSpan span;
  const PositionRule& rule;
  ByteRowShape shape;
  int sampleBytes;  ///< from a sample to the next: 1 for luma; 2 for chroma, whose Cb and Cr share a place
};

void LayOutCoefficients(const Layout& layout, const std::int16_t* taps, std::uint8_t* indices,
                        std::uint8_t* coefficients) {
  const int pairs = PairsOf(layout.span);
  const int first = layout.span.first;
  const std::int16_t firstTwo[2] = {taps[first], first + 1 < kMaxTaps ? taps[first + 1] : std::int16_t{0}};
  if (firstTwo[0] == kUnity || firstTwo[1] == kUnity) {
    // Half of it, twice, on the same sample.
    const std::uint8_t index = indices[firstTwo[0] == kUnity ? 0 : 1];
    indices[0] = indices[1] = index;
    coefficients[0] = coefficients[1] = kUnity / 2;
    return;
  }
  for (int pair = 0; pair < pairs; ++pair, coefficients += layout.shape.vectorBytes) {
    for (int i = 0; i < 2; ++i) {
      const int tap = first + 2 * pair + i;
      coefficients[i] = static_cast<std::uint8_t>(tap < kMaxTaps ? taps[tap] : 0);
    }
  }
}

void LayOutVector(const Layout& layout, std::int32_t firstOutput, std::uint8_t* pattern, std::int32_t* windows) {
  const ByteRowShape& shape = layout.shape;
  const int resultsPerWindow = shape.windowBytes / 2;
  for (int lane = 0; lane < shape.vectorBytes / 2; ++lane) {
    const PhasePosition position = layout.rule.Locate(firstOutput + lane / layout.sampleBytes);
    const std::int32_t byte = (position.source - (layout.bank.taps / 2 - 1) + layout.span.first) * layout.sampleBytes +
                              lane % layout.sampleBytes;
    std::int32_t& window = windows[lane / resultsPerWindow];
    if (lane % resultsPerWindow == 0) window = byte;
    std::uint8_t* const indices = pattern + 2 * lane;
    indices[0] = static_cast<std::uint8_t>(byte - window);
    indices[1] = static_cast<std::uint8_t>(byte - window + layout.sampleBytes);
    LayOutCoefficients(layout, layout.bank.coefficient[position.phase], indices, indices + shape.vectorBytes);
  }
}

/// Lays out the vectors until the pattern repeats, at most those of a row, and moves `memory` past them.
void LayOutGrid(const Layout& layout, std::int32_t outputs, std::uint8_t*& memory, ByteRowGrid& grid) {
  const ByteRowShape& shape = layout.shape;
  const PositionRule& rule = layout.rule;
  const std::int32_t perVector = shape.vectorBytes / 2 / layout.sampleBytes;
  const std::int32_t vectorsOfRow = (outputs + 2 * perVector - 1) / (2 * perVector) * 2;
  const std::int64_t stepOfVector = rule.step * perVector;
  const std::int64_t period = rule.unit / std::gcd(rule.unit, stepOfVector);
  const bool repeats = period < vectorsOfRow;
  grid.vectors = repeats ? static_cast<std::int32_t>(period) : vectorsOfRow;
  grid.advance = repeats ? static_cast<std::int32_t>(period * stepOfVector / rule.unit * layout.sampleBytes) : 0;
  const int windowsPerVector = shape.vectorBytes / shape.windowBytes;
  auto* const windows = reinterpret_cast<std::int32_t*>(memory);
  memory += (static_cast<std::size_t>(grid.vectors * windowsPerVector) * sizeof(std::int32_t) + kMaxVectorBytes - 1) /
            kMaxVectorBytes * kMaxVectorBytes;
  grid.windows = windows;
  grid.patterns = memory;
  for (std::int32_t v = 0; v < grid.vectors; ++v) {
    LayOutVector(layout, v * perVector, memory, windows + v * windowsPerVector);
    memory += shape.vectorBytes * (1 + PairsOf(layout.span));
  }
}

}  // namespace

bool CanLayOutByteRows(const TapBank& bank, const RowRules& rules) {
  if (rules.luma.step > 2 * rules.luma.unit || rules.chroma.step > 2 * rules.chroma.unit) return false;
  const int pairs = PairsOf(SpanOf(bank));
  return pairs == 1 || (pairs <= kMaxTapPairs && !NeedsUnity(bank));
}

std::uint64_t ByteRowPlanBytes(std::uint64_t outWidth) {
  // For every 8 results of either grid: 16 bytes of indices, as many of coefficients for each pair of taps, and at most
  // 8 of windows. A row of results is rounded up to two vectors; the rest is more than the widest ones need for that.
  const std::uint64_t vectors = outWidth / 8 + 8;
  return 2 * vectors * (16 * (1 + kMaxTapPairs) + 8) + 16 * kMaxVectorBytes * (1 + kMaxTapPairs);
}

void LayOutByteRows(const TapBank& bank, const RowRules& rules, std::int32_t outWidth, const ByteRowShape& shape,
                    std::uint8_t* memory, ByteRowPlan& plan) {
  const TapSpan span = SpanOf(bank);
  plan.tapPairs = PairsOf(span);
  LayOutGrid({bank, span, rules.luma, shape, 1}, outWidth, memory, plan.luma);
  LayOutGrid({bank, span, rules.chroma, shape, 2}, (outWidth + 1) / 2, memory, plan.chroma);
}

}  // namespace vidproc
