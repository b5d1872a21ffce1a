#include "plan/horizontal_row_layout.h"

#include <algorithm>

#include "plan/row_taps.h"

namespace vidproc {
namespace {

/// Periods beyond this are laid out for the whole row instead.
constexpr std::int32_t kMaxPeriod = 64;

}  // namespace

HorizontalRowLayout::HorizontalRowLayout(const HorizontalRowRequest& request)
    : positions(request.positions, request.positions + request.outputs) {
  bank.reserve(std::size_t{kPhases} * kMaxTaps);
  for (int phase = 0; phase < kPhases; ++phase) {
    bank.insert(bank.end(), request.bank[phase], request.bank[phase] + kMaxTaps);
  }
  const std::int32_t centre = request.taps / 2 - 1;
  for (RowPosition& position : positions) {
    // Farther out all taps weigh the same repeated sample.
    position.source = std::clamp(position.source, -request.taps / 2, request.inputs + centre) - centre;
  }
  plan.form = HorizontalForm::kGeneral;
  plan.outputs = request.outputs;
  plan.step = request.step;
  plan.shift = request.shift;
  plan.taps = request.taps;
  plan.positions = positions.data();
  plan.coefficients = bank.data();
  if (request.shape.vectorBytes == 0) return;
  if (!ChooseShiftedRows(request.shape) && !ChoosePairs(request.shape)) plan.form = HorizontalForm::kGeneral;
}

std::uint32_t HorizontalRowLayout::UsedPhases() const {
  std::uint32_t used = 0;
  for (const RowPosition& position : positions) used |= 1u << position.phase;
  return used;
}

bool HorizontalRowLayout::Repeats(std::int32_t distance, std::int32_t count) const {
  const RowPosition* const now = positions.data();
  const RowPosition* const later = now + distance;
  for (std::int32_t k = 0; k < count; ++k) {
    if (now[k].phase != later[k].phase || later[k].source - now[k].source != later->source - now->source) return false;
  }
  return true;
}

bool HorizontalRowLayout::ChooseShiftedRows(const ByteRowShape& shape) {
  const std::int16_t* const phase = bank.data() + positions[0].phase * kMaxTaps;
  if (plan.outputs < 2 || positions[1].source != positions[0].source + 1 || !Repeats(1, plan.outputs - 1) ||
      plan.taps - std::count(phase, phase + plan.taps, 0) > kMaxVerticalTaps) {
    return false;
  }
  plan.form = HorizontalForm::kSamePhase;
  plan.shifted = PlanVerticalTaps(phase, plan.taps, shape);
  for (std::int32_t& row : plan.shifted.row) row += positions[0].source + plan.taps / 2 - 1;
  return true;
}

bool HorizontalRowLayout::ChoosePairs(const ByteRowShape& shape) {
  const TapPairs pairs = PairTaps(bank.data(), plan.taps, UsedPhases());
  if (!pairs.AreExact(UsedPhases())) return false;
  plan.pairs = pairs.count;
  for (int p = 0; p < pairs.count; ++p) plan.pairOffset[p] = pairs.tap[p] * plan.step;

  const std::int32_t perVector = shape.vectorBytes / 2 / plan.step;
  const std::int32_t whole = plan.outputs * plan.step / shape.vectorBytes * 2;
  std::int32_t period = 1;
  while (period < whole && (period > kMaxPeriod || !Repeats(period * perVector, (whole - period) * perVector)))
    ++period;
  const std::int32_t vectors = std::min(period, whole);
  if (!LayOutGrid(shape, pairs, 0, vectors, grid, plan.grid) || !LayOutGrid(shape, pairs, whole, 2, end, plan.end)) {
    return false;
  }
  if (vectors < whole) {
    plan.grid.advance = (positions.data()[vectors * perVector].source - positions[0].source) * plan.step;
  }
  plan.form = vectors == 1 ? HorizontalForm::kOnePattern : HorizontalForm::kPatterns;
  const bool halves = plan.step == 1 && positions.size() > 1 && positions[1].source == positions[0].source + 2;
  if (vectors == 1 && halves && Repeats(1, plan.outputs - 1)) plan.form = HorizontalForm::kAdjacentPairs;
  return true;
}

/// Lays out `vectors` of them from one on. @return whether the windows reach all samples.
bool HorizontalRowLayout::LayOutGrid(const ByteRowShape& shape, const TapPairs& pairs, std::int32_t firstVector,
                                     std::int32_t vectors, GridMemory& memory, ByteRowGrid& grid) {
  const std::int32_t windowsPerVector = shape.vectorBytes / shape.windowBytes;
  const std::int32_t patternBytes = shape.vectorBytes * (1 + pairs.count);
  memory.windows.resize(static_cast<std::size_t>(vectors * windowsPerVector));
  memory.patterns.resize(static_cast<std::size_t>(vectors * patternBytes));
  grid = {memory.patterns.data(), memory.windows.data(), vectors, 0};
  for (std::int32_t v = 0; v < vectors; ++v) {
    const std::int32_t firstResult = (firstVector + v) * shape.vectorBytes / 2;
    if (!LayOutVector(shape, pairs, firstResult, memory.windows.data() + v * windowsPerVector,
                      memory.patterns.data() + v * patternBytes)) {
      return false;
    }
  }
  return true;
}

/// Results past the last one repeat it.
bool HorizontalRowLayout::LayOutVector(const ByteRowShape& shape, const TapPairs& pairs, std::int32_t firstResult,
                                       std::int32_t* windows, std::uint8_t* pattern) const {
  const std::int32_t resultsPerWindow = shape.windowBytes / 2;
  for (std::int32_t lane = 0; lane < shape.vectorBytes / 2; ++lane) {
    const std::int32_t output = std::min((firstResult + lane) / plan.step, plan.outputs - 1);
    const RowPosition& position = positions.data()[output];
    const std::int32_t byte = position.source * plan.step + lane % plan.step;
    std::int32_t& window = windows[lane / resultsPerWindow];
    if (lane % resultsPerWindow == 0) window = byte;
    const std::int32_t index = byte - window;
    if (index < 0 || index + plan.step >= shape.windowBytes) return false;
    pattern[2 * lane] = static_cast<std::uint8_t>(index);
    pattern[2 * lane + 1] = static_cast<std::uint8_t>(index + plan.step);
    for (std::int32_t p = 0; p < pairs.count; ++p) {
      std::uint8_t* const coefficients = pattern + (1 + p) * shape.vectorBytes + 2 * lane;
      coefficients[0] = static_cast<std::uint8_t>(pairs.coefficient[position.phase][2 * p]);
      coefficients[1] = static_cast<std::uint8_t>(pairs.coefficient[position.phase][2 * p + 1]);
    }
  }
  return true;
}

}  // namespace vidproc
