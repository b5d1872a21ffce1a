#include "plan/horizontal_row_layout.h"

#include <algorithm>

#include "plan/exactness.h"
#include "plan/phase_position.h"
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
  for (PhasePosition& position : positions) {
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
  if (ChooseSamePhase(request.shape)) return;
  if (!StepsByTwo() && ChooseWholeWindows(request.shape)) return;
  if (ChoosePairs(request.shape)) return;
  ChooseOctets(request.shape);
}

std::uint32_t HorizontalRowLayout::UsedPhases() const {
  std::uint32_t used = 0;
  for (const PhasePosition& position : positions) used |= 1u << position.phase;
  return used;
}

bool HorizontalRowLayout::Repeats(std::int32_t distance, std::int32_t count) const {
  const PhasePosition* const now = positions.data();
  const PhasePosition* const later = now + distance;
  for (std::int32_t k = 0; k < count; ++k) {
    if (now[k].phase != later[k].phase || later[k].source - now[k].source != later->source - now->source) return false;
  }
  return true;
}

bool HorizontalRowLayout::ChooseSamePhase(const ByteRowShape& shape) {
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

/// Lays out the main grid (vectors until the pattern repeats, at most as many as fill whole vectors of bytes) and the
/// grid of the row's end. @return whether the windows reach all samples.
template <class LayOutVector>
bool HorizontalRowLayout::LayOutGrids(const ByteRowShape& shape, std::int32_t windowsPerVector,
                                      std::int32_t patternBytes, const LayOutVector& layOutVector) {
  const std::int32_t perVector = shape.vectorBytes / 2 / plan.step;
  const std::int32_t whole = plan.outputs * plan.step / shape.vectorBytes * 2;
  std::int32_t period = 1;
  while (period < whole && (period > kMaxPeriod || !Repeats(period * perVector, (whole - period) * perVector)))
    ++period;
  const auto layOut = [&](std::int32_t first, std::int32_t vectors, GridMemory& memory, ByteRowGrid& to) {
    memory.windows.resize(static_cast<std::size_t>(vectors) * static_cast<std::size_t>(windowsPerVector));
    memory.patterns.assign(static_cast<std::size_t>(vectors) * static_cast<std::size_t>(patternBytes), 0);
    to = {memory.patterns.data(), memory.windows.data(), vectors, 0};
    for (std::int32_t v = 0; v < vectors; ++v) {
      if (!layOutVector((first + v) * shape.vectorBytes / 2, memory.windows.data() + v * windowsPerVector,
                        memory.patterns.data() + v * patternBytes)) {
        return false;
      }
    }
    return true;
  };
  const std::int32_t vectors = std::min(period, whole);
  if (!layOut(0, vectors, grid, plan.grid) || !layOut(whole, 2, end, plan.end)) return false;
  if (vectors < whole) {
    plan.grid.advance = (positions.data()[vectors * perVector].source - positions[0].source) * plan.step;
  }
  return true;
}

HorizontalRowLayout::FirstTap HorizontalRowLayout::LocateFirstTap(std::int32_t result) const {
  const PhasePosition& position = positions.data()[std::min(result / plan.step, plan.outputs - 1)];
  return {position.source * plan.step + result % plan.step, position.phase};
}

/// Single samples at 2:1.
bool HorizontalRowLayout::StepsByTwo() const {
  return plan.step == 1 && positions.size() > 1 && positions[1].source == positions[0].source + 2 &&
         Repeats(1, plan.outputs - 1);
}

HorizontalRowLayout::Reach HorizontalRowLayout::ReachOf(const VerticalTaps* phases, std::int32_t firstResult,
                                                        std::int32_t results) const {
  Reach reach{INT32_MAX, INT32_MIN};
  for (std::int32_t result = firstResult; result < firstResult + results; ++result) {
    const FirstTap first = LocateFirstTap(result);
    const VerticalTaps& taps = phases[first.phase];
    const auto [lowest, highest] = std::minmax_element(taps.row, taps.row + taps.count);
    reach.first = std::min(reach.first, first.byte + (plan.taps / 2 - 1 + *lowest) * plan.step);
    reach.last = std::max(reach.last, first.byte + (plan.taps / 2 - 1 + *highest) * plan.step);
  }
  return reach;
}

bool HorizontalRowLayout::ChooseWholeWindows(const ByteRowShape& shape) {
  VerticalTaps phases[kPhases];
  const std::uint32_t usedPhases = UsedPhases();
  plan.pairs = 1;
  for (int phase = 0; phase < kPhases; ++phase) {
    if (!HasPhase(usedPhases, phase)) continue;
    if (!PairTapsOfPhase(bank.data() + phase * kMaxTaps, plan.taps, phases[phase])) return false;
    plan.pairs = std::max(plan.pairs, (phases[phase].count + 1) / 2);
  }
  plan.secondWindow = 0;
  const std::int32_t resultsPerWindow = shape.windowBytes / 2;
  for (std::int32_t result = 0; result < plan.outputs * plan.step; result += resultsPerWindow) {
    const Reach reach = ReachOf(phases, result, resultsPerWindow);
    plan.secondWindow = std::max(plan.secondWindow, reach.last - reach.first + 1 - shape.windowBytes);
  }
  const auto layOut = [&](std::int32_t firstResult, std::int32_t* windows, std::uint8_t* pattern) {
    return LayOutWholeWindows(shape, phases, firstResult, windows, pattern);
  };
  if (!LayOutGrids(shape, shape.vectorBytes / shape.windowBytes, 2 * shape.vectorBytes * plan.pairs, layOut)) {
    return false;
  }
  plan.form = HorizontalForm::kWholeWindows;
  return true;
}

bool HorizontalRowLayout::LayOutWholeWindows(const ByteRowShape& shape, const VerticalTaps* phases,
                                             std::int32_t firstResult, std::int32_t* windows,
                                             std::uint8_t* pattern) const {
  const std::int32_t resultsPerWindow = shape.windowBytes / 2;
  for (std::int32_t lane = 0; lane < shape.vectorBytes / 2; ++lane) {
    std::int32_t& window = windows[lane / resultsPerWindow];
    if (lane % resultsPerWindow == 0) {
      const Reach reach = ReachOf(phases, firstResult + lane, resultsPerWindow);
      window = std::min(reach.first, reach.last + 1 - shape.windowBytes);
    }
    const FirstTap first = LocateFirstTap(firstResult + lane);
    const std::int32_t centre = first.byte + (plan.taps / 2 - 1) * plan.step - window;
    if (!LayOutWholeResult(shape, phases[first.phase], centre, pattern + 2 * lane)) return false;
  }
  return true;
}

/// The last pair of the phase is the last one here. Of the other taps those come first that only one of the windows
/// holds.
bool HorizontalRowLayout::LayOutWholeResult(const ByteRowShape& shape, const VerticalTaps& taps, std::int32_t centre,
                                            std::uint8_t* pattern) const {
  const std::int32_t endOfFirst = 2 * (plan.pairs / 2);
  const std::int32_t lastPair = 2 * (plan.pairs - 1);
  const std::int32_t others = (taps.count - 1) / 2 * 2;
  const auto indexOf = [&](std::int32_t tap) { return centre + taps.row[tap] * plan.step; };
  const auto put = [&](std::int32_t tap, std::int32_t place, std::int32_t end) {
    const std::int32_t index = indexOf(tap) - (place < endOfFirst ? 0 : plan.secondWindow);
    if (place >= end || index < 0 || index >= shape.windowBytes) return false;
    std::uint8_t* const to = pattern + place / 2 * 2 * shape.vectorBytes + place % 2;
    to[0] = static_cast<std::uint8_t>(index);
    to[shape.vectorBytes] = static_cast<std::uint8_t>(taps.coefficient[tap]);
    return true;
  };
  std::int32_t first = 0;
  std::int32_t second = endOfFirst;
  for (const bool inBoth : {false, true}) {
    for (std::int32_t tap = 0; tap < others; ++tap) {
      const bool onlyFirst = indexOf(tap) < plan.secondWindow;
      const bool onlySecond = indexOf(tap) >= shape.windowBytes;
      if (inBoth == (onlyFirst || onlySecond)) continue;
      const bool toFirst = onlyFirst || (inBoth && first < endOfFirst);
      if (!(toFirst ? put(tap, first++, endOfFirst) : put(tap, second++, lastPair))) return false;
    }
  }
  for (std::int32_t tap = others; tap < taps.count; ++tap) {
    if (!put(tap, lastPair + tap - others, lastPair + 2)) return false;
  }
  return true;
}

bool HorizontalRowLayout::ChoosePairs(const ByteRowShape& shape) {
  const TapPairs pairs = PairTaps(bank.data(), plan.taps, UsedPhases());
  if (!pairs.AreExact(UsedPhases())) return false;
  const auto layOut = [&](std::int32_t firstResult, std::int32_t* windows, std::uint8_t* pattern) {
    return LayOutPairs(shape, pairs, firstResult, windows, pattern);
  };
  if (!LayOutGrids(shape, shape.vectorBytes / shape.windowBytes, shape.vectorBytes * (1 + pairs.count), layOut)) {
    return false;
  }
  plan.pairs = pairs.count;
  for (int p = 0; p < pairs.count; ++p) plan.pairOffset[p] = pairs.tap[p] * plan.step;
  plan.form = plan.grid.vectors == 1 ? HorizontalForm::kOnePattern : HorizontalForm::kPatterns;
  if (plan.grid.vectors == 1 && StepsByTwo()) plan.form = HorizontalForm::kAdjacentPairs;
  return true;
}

bool HorizontalRowLayout::LayOutPairs(const ByteRowShape& shape, const TapPairs& pairs, std::int32_t firstResult,
                                      std::int32_t* windows, std::uint8_t* pattern) const {
  const std::int32_t resultsPerWindow = shape.windowBytes / 2;
  for (std::int32_t lane = 0; lane < shape.vectorBytes / 2; ++lane) {
    const FirstTap tap = LocateFirstTap(firstResult + lane);
    std::int32_t& window = windows[lane / resultsPerWindow];
    if (lane % resultsPerWindow == 0) window = tap.byte;
    const std::int32_t index = tap.byte - window;
    if (index < 0 || index + plan.step >= shape.windowBytes) return false;
    pattern[2 * lane] = static_cast<std::uint8_t>(index);
    pattern[2 * lane + 1] = static_cast<std::uint8_t>(index + plan.step);
    for (std::int32_t p = 0; p < pairs.count; ++p) {
      std::uint8_t* const coefficients = pattern + (1 + p) * shape.vectorBytes + 2 * lane;
      coefficients[0] = static_cast<std::uint8_t>(pairs.coefficient[tap.phase][2 * p]);
      coefficients[1] = static_cast<std::uint8_t>(pairs.coefficient[tap.phase][2 * p + 1]);
    }
  }
  return true;
}

bool HorizontalRowLayout::ChooseOctets(const ByteRowShape& shape) {
  if (!OctetsAreExact()) return false;
  plan.octets = plan.taps > 8 ? 2 : 1;
  const auto layOut = [&](std::int32_t firstResult, std::int32_t* windows, std::uint8_t* pattern) {
    return LayOutOctets(shape, firstResult, windows, pattern);
  };
  if (!LayOutGrids(shape, shape.vectorBytes / 4, 4 * shape.vectorBytes * (1 + plan.octets), layOut)) return false;
  plan.form = HorizontalForm::kOctets;
  return true;
}

/// The halves of all octets add up in 16 bits each; only adding these may saturate.
bool HorizontalRowLayout::OctetsAreExact() const {
  const std::uint32_t usedPhases = UsedPhases();
  for (int phase = 0; phase < kPhases; ++phase) {
    if (!HasPhase(usedPhases, phase)) continue;
    const std::int16_t* const row = bank.data() + phase * kMaxTaps;
    for (const int half : {0, 4}) {
      std::int16_t coefficients[8] = {};
      std::copy_n(row + half, 4, coefficients);
      if (plan.taps > 8) std::copy_n(row + 8 + half, 4, coefficients + 4);
      if (!ByteProductsFitWords(coefficients, 8)) return false;
    }
  }
  return true;
}

bool HorizontalRowLayout::LayOutOctets(const ByteRowShape& shape, std::int32_t firstResult, std::int32_t* windows,
                                       std::uint8_t* pattern) const {
  const std::int32_t tiles = shape.vectorBytes / 16;
  for (std::int32_t result = 0; result < shape.vectorBytes / 2; ++result) {
    const FirstTap tap = LocateFirstTap(firstResult + result);
    // Two results per tile of each of the four vectors: adding neighbours brings them into order.
    const std::int32_t tile = result / 8;
    const std::int32_t part = result % 8 / 2;
    std::int32_t& window = windows[part * tiles + tile];
    if (result % 2 == 0) window = tap.byte;
    const std::int32_t index = tap.byte - window;
    if (index < 0 || index + 7 * plan.step > 15) return false;
    std::uint8_t* to = pattern + part * shape.vectorBytes * (1 + plan.octets) + 16 * tile + 8 * (result % 2);
    for (std::int32_t t = 0; t < 8; ++t) to[t] = static_cast<std::uint8_t>(index + t * plan.step);
    for (std::int32_t octet = 0; octet < plan.octets; ++octet) {
      to += shape.vectorBytes;
      const std::int16_t* const coefficients = bank.data() + tap.phase * kMaxTaps + 8 * octet;
      for (std::int32_t t = 0; t < 8; ++t) to[t] = static_cast<std::uint8_t>(coefficients[t]);
    }
  }
  return true;
}

}  // namespace vidproc
