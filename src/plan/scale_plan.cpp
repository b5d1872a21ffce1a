// Positions and phases from a geometry, coefficients and their non-zero spans from the lane banks, and whether the byte
// forms are exact for them.
#include "plan/scale_plan.h"

#include <cstring>

#include "vidproc/video_processor.h"

namespace vidproc {
namespace {

using LaneBank = std::int16_t[16][16][8];

/// Takes the coefficients that a kernel of `taps` taps reads, lane 0 standing for eight, if they have changed.
/// @return whether they have.
bool UpdateBank(const LaneBank& lanes, int taps, TapBank& bank) {
  std::int16_t coefficient[kPhases][kMaxTaps] = {};
  for (int phase = 0; phase < kPhases; ++phase) {
    for (int tap = 0; tap < taps; ++tap) coefficient[phase][tap] = lanes[phase][tap][0];
  }
  if (taps == bank.taps && std::memcmp(coefficient, bank.coefficient, sizeof coefficient) == 0) return false;
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
  return true;
}

/// Sorts the outputs of a row by phase, ascending within each.
void GroupByPhase(const ScaleGeometry& geometry, TapPosition* columns, HorizontalPlan& plan) {
  std::int32_t luma[kPhases] = {};
  std::int32_t chroma[kPhases] = {};
  const std::int32_t chromaWidth = geometry.outWidth / 2 + geometry.outWidth % 2;
  for (std::int32_t k = 0; k < geometry.outWidth; ++k) {
    const std::int32_t phase = LocatePhase(k, geometry.horizontalRatio).phase;
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
    const PhasePosition position = LocatePhase(k, geometry.horizontalRatio);
    columns[next[position.phase]++] = {k, position.source};
  }
}

}  // namespace

void ScalePlan::UpdatePositions(const Memory& memory) {
  verticalBank.usedPhases = 0;
  for (std::int32_t r = 0; r < geometry.outHeight; ++r) {
    const PhasePosition position = LocatePhase(r, geometry.verticalRatio);
    memory.rows[r] = {position.source, position.phase};
    verticalBank.usedPhases |= 1u << position.phase;
  }
  rowPositions = memory.rows;
  GroupByPhase(geometry, memory.columns, horizontal);
  horizontalBank.usedPhases = 0;
  for (int i = 0; i < horizontal.runCount; ++i) horizontalBank.usedPhases |= 1u << horizontal.runs[i].phase;
}

void ScalePlan::UpdateByteForms(const Memory& memory) {
  byteRowPlan = nullptr;
  adaptsInBytes = false;
  if (geometry.byteRowShape.vectorBytes == 0) return;
  adaptsInBytes = AdaptiveBytesAreExact(verticalBank, horizontalBank);
  if (geometry.horizontalTaps > 8) return;
  if (!ByteRowScalerIsExact(verticalBank, horizontalBank, geometry.precisionBits, geometry.horizontalRatio)) {
    return;
  }
  LayOutByteRowPlan(horizontalBank, geometry.horizontalRatio, geometry.outWidth, geometry.byteRowShape,
                    memory.rowPatterns, byteRowPlanStorage);
  byteRowPlan = &byteRowPlanStorage;
}

void ScalePlan::Update(const VideoProcessor& processor, const ScaleGeometry& wanted, const Memory& memory) {
  const bool moved = !current || !(wanted == geometry);
  geometry = wanted;
  const bool horizontalChanged = UpdateBank(processor.horizontalFilterLanes, wanted.horizontalTaps, horizontalBank);
  const bool verticalChanged = UpdateBank(processor.verticalFilterLanes, wanted.verticalTaps, verticalBank);
  if (moved) UpdatePositions(memory);
  if (moved || horizontalChanged || verticalChanged) UpdateByteForms(memory);
  current = true;
}

bool RatioReachesNoFurther(const Ratio& ratio, std::int64_t outSize, std::int64_t inSize) {
  return ratio.up >= 1 && ratio.down >= 1 && (outSize - 1) * ratio.down / ratio.up <= inSize - 1;
}

}  // namespace vidproc
