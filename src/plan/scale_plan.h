// What a scaling kernel needs to know of a geometry and a pair of banks before it touches a sample: the position and
// phase of every output row and column, outputs grouped by phase, and the banks as plain coefficients. Kept from frame
// to frame and keyed by everything it was made from, because an embedding program may write any of it between two
// calls.
#pragma once

#include <cstdint>

#include "kernels/byte_row_plan.h"
#include "kernels/scale_job.h"
#include "plan/row_plan.h"

class VideoProcessor;

namespace vidproc {

/// Sizes and ratios of both axes; taps that the kernel reads per axis; precision of the banks; and what the level in
/// use can do with bytes.
struct ScaleGeometry {
  std::int32_t inWidth, inHeight, outWidth, outHeight;
  Ratio horizontalRatio, verticalRatio;
  std::int32_t horizontalTaps, verticalTaps;
  std::int32_t precisionBits;
  ByteRowShape byteRowShape;
  bool operator==(const ScaleGeometry&) const = default;
};

class ScalePlan {
 public:
  /// Where the plan's arrays lie: outHeight rows, outWidth columns, ByteRowPlanBytes(outWidth). They outlive the plan.
  struct Memory {
    RowPosition* rows;
    TapPosition* columns;
    std::uint8_t* rowPatterns;
  };

  /// Brings the plan up to date.
  void Update(const VideoProcessor& processor, const ScaleGeometry& wanted, const Memory& memory);
  /// Forgets what it was made from: the next Update builds anew.
  void Invalidate() { current = false; }

  const RowPosition* rowPositions = nullptr;
  HorizontalPlan horizontal{};
  TapBank horizontalBank{};
  TapBank verticalBank{};
  bool adaptsInBytes = false;                ///< as far as the banks go
  const ByteRowPlan* byteRowPlan = nullptr;  ///< null where only the general form is exact

 private:
  void UpdatePositions(const Memory& memory);
  void UpdateByteForms(const Memory& memory);

  ByteRowPlan byteRowPlanStorage{};
  bool current = false;
  ScaleGeometry geometry{};
};

/// True when every output sample of an axis has its centre tap inside the source.
bool RatioReachesNoFurther(const Ratio& ratio, std::int64_t outSize, std::int64_t inSize);

}  // namespace vidproc
