#include "frame/scale_plan.h"

#include <cstring>

#include "vidproc/video_processor.h"

namespace vidproc {
namespace {

using LaneBank = std::int16_t[16][16][8];

/// Takes the coefficients that a kernel of `taps` taps reads, lane 0 standing for eight, if they have changed.
void UpdateBank(const LaneBank& lanes, int taps, TapBank& bank) {
  std::int16_t coefficient[kPhases][kMaxTaps] = {};
  for (int phase = 0; phase < kPhases; ++phase) {
    for (int tap = 0; tap < taps; ++tap) coefficient[phase][tap] = lanes[phase][tap][0];
  }
  if (taps == bank.taps && std::memcmp(coefficient, bank.coefficient, sizeof coefficient) == 0) return;
  bank.taps = taps;
  std::memcpy(bank.coefficient, coefficient, sizeof coefficient);
  for (int phase = 0; phase < kPhases; ++phase) {
    const std::int16_t* row = bank.coefficient[phase];
    int first = 0;
    int last = taps - 1;
    while (first < last && row[first] == 0) ++first;
    while (last > first && row[last] == 0) --last;
    bank.firstTap[phase] = first;
    bank.tapCount[phase] = last - first + 1;
  }
}

struct Position {
  std::int32_t source;
  std::int32_t phase;
};

/// The source sample under an output sample's centre tap, and its phase in sixteenths.
Position Locate(std::int64_t output, std::int32_t up, std::int32_t down) {
  const std::int64_t scaled = output * down;
  const std::int64_t source = scaled / up;
  const double sixteenths = static_cast<double>(scaled * kPhases) / up - static_cast<double>(source * kPhases);
  return {static_cast<std::int32_t>(source), static_cast<std::int32_t>(sixteenths)};
}

/// Sorts the outputs of a row by phase, ascending within each.
void GroupByPhase(const ScaleGeometry& geometry, TapPosition* columns, HorizontalPlan& plan) {
  std::int32_t luma[kPhases] = {};
  std::int32_t chroma[kPhases] = {};
  const std::int32_t chromaWidth = geometry.outWidth / 2 + geometry.outWidth % 2;
  const auto phaseOf = [&](std::int32_t k) { return Locate(k, geometry.horizontalUp, geometry.horizontalDown).phase; };
  for (std::int32_t k = 0; k < geometry.outWidth; ++k) {
    const std::int32_t phase = phaseOf(k);
    ++luma[phase];
    if (k < chromaWidth) ++chroma[phase];
  }
  plan.positions = columns;
  plan.runCount = 0;
  std::int32_t next[kPhases] = {};
  std::int32_t first = 0;
  for (std::int32_t phase = 0; phase < kPhases; ++phase) {
    next[phase] = first;
    if (luma[phase] > 0) plan.runs[plan.runCount++] = {phase, first, luma[phase], chroma[phase]};
    first += luma[phase];
  }
  for (std::int32_t k = 0; k < geometry.outWidth; ++k) {
    const Position position = Locate(k, geometry.horizontalUp, geometry.horizontalDown);
    columns[next[position.phase]++] = {k, position.source};
  }
}

}  // namespace

void ScalePlan::Update(const VideoProcessor& processor, const ScaleGeometry& wanted, RowPosition* rows,
                       TapPosition* columns) {
  UpdateBank(processor.horizontalFilterLanes, wanted.horizontalTaps, horizontalBank);
  UpdateBank(processor.verticalFilterLanes, wanted.verticalTaps, verticalBank);
  if (current && wanted == geometry) return;
  for (std::int32_t r = 0; r < wanted.outHeight; ++r) {
    const Position position = Locate(r, wanted.verticalUp, wanted.verticalDown);
    rows[r] = {position.source, position.phase};
  }
  rowPositions = rows;
  GroupByPhase(wanted, columns, horizontal);
  geometry = wanted;
  current = true;
}

bool RatioReachesNoFurther(std::int32_t up, std::int32_t down, std::int64_t outSize, std::int64_t inSize) {
  return up >= 1 && down >= 1 && (outSize - 1) * down / up <= inSize - 1;
}

}  // namespace vidproc
