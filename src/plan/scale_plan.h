// What a scaling kernel needs to know of a geometry and a pair of banks before it touches a sample: the position and
// phase of every output row and column, outputs grouped by phase, the banks' non-zero spans, and whether the byte forms
// are exact for them. Kept from frame to frame and keyed by everything it was made from.
#pragma once

#include <cstdint>

#include "kernels/byte_row_plan.h"
#include "kernels/scale_job.h"
#include "plan/byte_row_layout.h"
#include "plan/phase_position.h"

namespace vidproc {

/// Sizes and positions of both axes; taps that the kernel reads per axis; precision of the banks; and what the level in
/// use can do with bytes.
struct ScaleGeometry {
  std::int32_t inWidth, inHeight, outWidth, outHeight;
  RowRules columns;
  PositionRule rows;
  std::int32_t horizontalTaps, verticalTaps;
  std::int32_t precisionBits;
  ByteRowShape byteRowShape;
  bool operator==(const ScaleGeometry&) const = default;
};

/// The coefficients of an axis by phase; those beyond its taps are 0.
using Coefficients = std::int16_t[kPhases][kMaxTaps];

class ScalePlan {
 public:
  /// Where the plan's arrays lie: outHeight rows, outWidth luma columns, half as many (rounded up) of chroma, and
  /// ByteRowPlanBytes(outWidth). They outlive the plan.
  struct Memory {
    PhasePosition* rows;
    TapPosition* lumaColumns;
    TapPosition* chromaColumns;
    std::uint8_t* rowPatterns;
  };

  /// Brings the plan up to date.
  void Update(const ScaleGeometry& wanted, const Coefficients& horizontal, const Coefficients& vertical,
              const Memory& memory);
  /// Forgets what it was made from: the next Update builds anew.
  void Invalidate() { current = false; }

  const PhasePosition* rowPositions = nullptr;
  ColumnPlan lumaColumns{};
  ColumnPlan chromaColumns{};
  TapBank horizontalBank{};
  TapBank verticalBank{};
  bool byteColumnsAreExact = false;          ///< as far as the banks go
  bool weightsAreCoefficients = false;       ///< of adaptive taps that lose no weight
  const ByteRowPlan* byteRowPlan = nullptr;  ///< null where byte rows are not exact, or the level has none

 private:
  void UpdatePositions(const Memory& memory);
  void UpdateByteForms(const Memory& memory);

  ByteRowPlan byteRowPlanStorage{};
  bool current = false;
  ScaleGeometry geometry{};
};

}  // namespace vidproc
