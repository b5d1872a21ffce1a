// What a scaling kernel needs to know of a geometry and a pair of banks before it touches a sample: the position and
// phase of every output row and column, outputs grouped by phase, and the banks as plain coefficients. Kept from frame
// to frame and keyed by everything it was made from, because an embedding program may write any of it between two
// calls.
#pragma once

#include <cstdint>

#include "passes/scale_job.h"

class VideoProcessor;

namespace vidproc {

/// Output to input size, reduced, per axis; taps that the kernel reads per axis.
struct ScaleGeometry {
  std::int32_t inWidth, inHeight, outWidth, outHeight;
  std::int32_t horizontalUp, horizontalDown, verticalUp, verticalDown;
  std::int32_t horizontalTaps, verticalTaps;
  bool operator==(const ScaleGeometry&) const = default;
};

class ScalePlan {
 public:
  /// Brings the plan up to date; rows and columns are arrays of outHeight and outWidth entries that outlive the plan.
  void Update(const VideoProcessor& processor, const ScaleGeometry& geometry, RowPosition* rows, TapPosition* columns);
  /// Forgets what it was made from: the next Update builds anew.
  void Invalidate() { current = false; }

  const RowPosition* rowPositions = nullptr;
  HorizontalPlan horizontal{};
  TapBank horizontalBank{};
  TapBank verticalBank{};

 private:
  bool current = false;
  ScaleGeometry geometry{};
};

/// True when every output sample of an axis has its centre tap inside the source.
bool RatioReachesNoFurther(std::int32_t up, std::int32_t down, std::int64_t outSize, std::int64_t inSize);

}  // namespace vidproc
