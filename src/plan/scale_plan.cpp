#include "plan/scale_plan.h"

#include <cstring>

#include "plan/exactness.h"

namespace vidproc {
namespace {

/// Takes the coefficients if they have changed. @return whether they have.
bool UpdateBank(const Coefficients& coefficients, int taps, TapBank& bank) {
  if (taps == bank.taps && std::memcmp(coefficients, bank.coefficient, sizeof coefficients) == 0) return false;
  bank.taps = taps;
  std::memcpy(bank.coefficient, coefficients, sizeof coefficients);
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

/// Sorts the outputs of a component's row by phase, ascending within each. @return the phases, as bits.
std::uint32_t GroupByPhase(const PositionRule& rule, std::int32_t outputs, TapPosition* columns, ColumnPlan& plan) {
  std::int32_t counts[kPhases] = {};
  for (std::int32_t k = 0; k < outputs; ++k) ++counts[rule.Locate(k).phase];
  plan.positions = columns;
  plan.runCount = 0;
  std::uint32_t phases = 0;
  std::int32_t next[kPhases] = {};
  std::int32_t first = 0;
  for (std::int32_t phase = 0; phase < kPhases; ++phase) {
    next[phase] = first;
    if (counts[phase] == 0) continue;
    plan.runs[plan.runCount++] = {phase, first, counts[phase]};
    phases |= 1u << phase;
    first += counts[phase];
  }
  for (std::int32_t k = 0; k < outputs; ++k) {
    const PhasePosition position = rule.Locate(k);
    columns[next[position.phase]++] = {k, position.source};
  }
  return phases;
}

}  // namespace

void ScalePlan::UpdatePositions(const Memory& memory) {
  verticalBank.usedPhases = 0;
  for (std::int32_t r = 0; r < geometry.outHeight; ++r) {
    memory.rows[r] = geometry.rows.Locate(r);
    verticalBank.usedPhases |= 1u << memory.rows[r].phase;
  }
  rowPositions = memory.rows;
  const std::int32_t chromaWidth = geometry.outWidth / 2 + geometry.outWidth % 2;
  horizontalBank.usedPhases = GroupByPhase(geometry.columns.luma, geometry.outWidth, memory.lumaColumns, lumaColumns) |
                              GroupByPhase(geometry.columns.chroma, chromaWidth, memory.chromaColumns, chromaColumns);
}

void ScalePlan::UpdateByteForms(const Memory& memory) {
  byteRowPlan = nullptr;
  byteColumnsAreExact = ByteColumnsAreExact(verticalBank, horizontalBank);
  weightsAreCoefficients = WeightsAreCoefficients(verticalBank, horizontalBank);
  if (geometry.byteRowShape.vectorBytes == 0 ||
      !ByteRowsAreExact(verticalBank, horizontalBank, geometry.precisionBits) ||
      !CanLayOutByteRows(horizontalBank, geometry.columns)) {
    return;
  }
  LayOutByteRows(horizontalBank, geometry.columns, geometry.outWidth, geometry.byteRowShape, memory.rowPatterns,
                 byteRowPlanStorage);
  byteRowPlan = &byteRowPlanStorage;
}

void ScalePlan::Update(const ScaleGeometry& wanted, const Coefficients& horizontal, const Coefficients& vertical,
                       const Memory& memory) {
  const bool moved = !current || !(wanted == geometry);
  geometry = wanted;
  const bool horizontalChanged = UpdateBank(horizontal, wanted.horizontalTaps, horizontalBank);
  const bool verticalChanged = UpdateBank(vertical, wanted.verticalTaps, verticalBank);
  if (moved) UpdatePositions(memory);
  if (moved || horizontalChanged || verticalChanged) UpdateByteForms(memory);
  current = true;
}

}  // namespace vidproc
