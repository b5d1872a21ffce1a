#include "frame/make_scale_job.h"

#include "frame/frame_memory.h"
#include "plan/exactness.h"

namespace vidproc {
namespace {

using LaneBank = std::int16_t[16][16][8];

ScaleGeometry GeometryOf(const VideoProcessor& p, const KernelTraits& kernel) {
  const PositionRule columns = AlignCorners({p.horizontalUp, p.horizontalDown});
  return {static_cast<std::int32_t>(p.inWidth),
          static_cast<std::int32_t>(p.inHeight),
          static_cast<std::int32_t>(p.outWidth),
          static_cast<std::int32_t>(p.outHeight),
          {columns, columns},
          AlignCorners({p.verticalUp, p.verticalDown}),
          kernel.horizontalTaps,
          kernel.verticalTaps,
          kernel.precisionBits,
          Kernels().byteRowShape};
}

/// The taps that a kernel reads, lane 0 standing for eight.
void ReadTaps(const LaneBank& lanes, int taps, Coefficients& coefficients) {
  for (int phase = 0; phase < kPhases; ++phase) {
    for (int tap = 0; tap < taps; ++tap) coefficients[phase][tap] = lanes[phase][tap][0];
  }
}

Form FormOf(const VideoProcessor& p, const ScalePlan& plan, const ScalerTraits& traits) {
  const bool levelHasIt = Kernels().byteRowShape.vectorBytes != 0;
  if (!traits.kernel.adapts) return ChooseForm(plan.byteRowPlan != nullptr, levelHasIt);
  if (p.adaptive == 0 && !traits.hasHistory) {
    return ChooseForm(plan.byteRowPlan != nullptr && plan.weightsAreCoefficients, levelHasIt);
  }
  const bool blends = !traits.hasHistory || BlendFitsBytes(p.temporalStrength, p.temporalShift);
  return ChooseForm(plan.byteColumnsAreExact && AdaptiveCurveFitsBytes(p.adaptive) && blends, levelHasIt);
}

/// Scaling kernels read past the end of short rows: those are copied to where they may.
Rows WithRoomPastRows(const VideoProcessor& p, const Rows& rows, std::uint32_t height, std::uint8_t* copy) {
  const std::uint64_t rowBytes = PackedInputRow(p);
  if (rowBytes >= kMinRowBytes) return rows;
  CopyRows(rows.start, static_cast<std::uint64_t>(rows.stride), copy, kMinRowBytes, rowBytes, height);
  return {copy, kMinRowBytes};
}

void FillGeometry(const VideoProcessor& p, ScaleJob& job) {
  job.inWidth = static_cast<std::int32_t>(p.inWidth);
  job.inHeight = static_cast<std::int32_t>(p.inHeight);
  job.destination = p.dstFrame;
  job.destinationStride = static_cast<std::ptrdiff_t>(p.outStride);
  job.outWidth = static_cast<std::int32_t>(p.outWidth);
  job.outHeight = static_cast<std::int32_t>(p.outHeight);
}

void FillPlan(const ScalePlan& plan, ScaleJob& job) {
  job.rowPositions = plan.rowPositions;
  job.verticalBank = &plan.verticalBank;
  job.horizontalBank = &plan.horizontalBank;
  job.lumaColumns = &plan.lumaColumns;
  job.chromaColumns = &plan.chromaColumns;
  job.byteRowPlan = plan.byteRowPlan;
}

void FillSettings(const VideoProcessor& p, ScaleJob& job) {
  // kept: adaptive 0 shifts by 255 or more, which clears the lost weight.
  job.adaptiveShift = p.adaptive == 0 ? 255 : p.adaptive - 1;
  job.temporalStrength = p.temporalStrength;
  job.temporalShift = p.temporalShift;
  job.lumaGain = p.lumaGain[0];
  job.lumaOffset = p.lumaOffset[0];
}

}  // namespace

void UpdatePlan(const VideoProcessor& p, Workspace& workspace, const ScalerTraits& traits) {
  Coefficients horizontal = {};
  Coefficients vertical = {};
  ReadTaps(p.horizontalFilterLanes, traits.kernel.horizontalTaps, horizontal);
  ReadTaps(p.verticalFilterLanes, traits.kernel.verticalTaps, vertical);
  workspace.plan.Update(GeometryOf(p, traits.kernel), horizontal, vertical, workspace.planMemory);
}

bool CanReadPlanes(const VideoProcessor& p, const Workspace& workspace, const ScalerTraits& traits,
                   const Frame420& planes) {
  // Staged rows are packed, and read by the processor's stride.
  const bool hasThisFrame = planes.width == p.inWidth && planes.height == p.inHeight && p.inStride == PackedInputRow(p);
  return hasThisFrame && planes.width >= kMinRowBytes && !traits.kernel.adapts &&
         FormOf(p, workspace.plan, traits) == Form::kProven;
}

ScaleJob MakeScaleJob(const VideoProcessor& p, const Workspace& workspace, const ScalerTraits& traits,
                      const Source& source, const SourcePlanes* planes) {
  ScaleJob job{};
  job.planes = planes;
  const Rows apart = CopyIfOverlapped(p, workspace.held, source.FrameRows());
  const Rows rows = WithRoomPastRows(p, apart, p.inHeight, workspace.narrowRows);
  job.source = rows.start;
  job.sourceStride = rows.stride;
  FillGeometry(p, job);
  FillPlan(workspace.plan, job);
  FillSettings(p, job);
  job.form = FormOf(p, workspace.plan, traits);
  job.strip = workspace.strip;
  if (traits.hasHistory) {
    job.history = p.previousFrame;
    job.firstFrame = p.temporalFirstFrame != 0;
  }
  if (traits.kernel.smoothsMotion) job.previousVertical = reinterpret_cast<std::int16_t*>(p.smoothingBufferLarge);
  return job;
}

void PlacePreviousInput(const VideoProcessor& p, const Workspace& workspace, ScaleJob& job) {
  const Rows previous{p.smoothingBufferSmall, static_cast<std::ptrdiff_t>(PackedInputRow(p))};
  const Rows rows = WithRoomPastRows(p, previous, p.outHeight, workspace.narrowPreviousInput);
  job.previousInput = rows.start;
  job.previousInputStride = rows.stride;
}

}  // namespace vidproc
