#include "frame/make_scale_job.h"

#include "frame/frame_memory.h"
#include "levels/general_forms.h"

namespace vidproc {
namespace {

ScaleGeometry GeometryOf(const VideoProcessor& p, const ScalerTraits& traits) {
  return {static_cast<std::int32_t>(p.inWidth),
          static_cast<std::int32_t>(p.inHeight),
          static_cast<std::int32_t>(p.outWidth),
          static_cast<std::int32_t>(p.outHeight),
          {p.horizontalUp, p.horizontalDown},
          {p.verticalUp, p.verticalDown},
          traits.horizontalTaps,
          traits.verticalTaps,
          traits.precisionBits,
          GeneralFormsOnly() ? ByteRowShape{} : Kernels().byteRowShape};
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
  job.horizontal = &plan.horizontal;
  job.byteRowPlan = plan.byteRowPlan;
}

void FillSettings(const VideoProcessor& p, const ScalePlan& plan, const ScalerTraits& traits, ScaleJob& job) {
  // From shifts of 8 on (adaptive 9, temporal shift 8) large differences regain weight, in 16-bit lanes only.
  const bool blendsInBytes = !traits.hasHistory || (p.temporalShift < 8 && p.temporalStrength < 128);
  job.adaptsInBytes = plan.adaptsInBytes && p.adaptive >= 1 && p.adaptive <= 8 && blendsInBytes;
  // kept: adaptive 0 shifts by 255 or more, which clears the lost weight.
  job.adaptiveShift = p.adaptive == 0 ? 255 : p.adaptive - 1;
  job.temporalStrength = p.temporalStrength;
  job.temporalShift = p.temporalShift;
  job.lumaGain = p.lumaGain[0];
  job.lumaOffset = p.lumaOffset[0];
}

}  // namespace

const ScalePlan& UpdatePlan(const VideoProcessor& p, Workspace& workspace, const ScalerTraits& traits) {
  workspace.plan.Update(p, GeometryOf(p, traits), workspace.planMemory);
  return workspace.plan;
}

bool ReadsPlanes(const VideoProcessor& p, const ScalePlan& plan, const ScalerTraits& traits, const Source& source) {
  const Frame420* const planes = source.planes;
  return planes != nullptr && !traits.adapts && plan.byteRowPlan != nullptr && planes->width >= kMinRowBytes &&
         planes->width == p.inWidth && planes->height == p.inHeight;
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
  FillSettings(p, workspace.plan, traits, job);
  job.strip = workspace.strip;
  if (traits.hasHistory) {
    job.history = p.previousFrame;
    job.firstFrame = p.temporalFirstFrame != 0;
  }
  if (traits.smoothsMotion) job.previousVertical = reinterpret_cast<std::int16_t*>(p.smoothingBufferLarge);
  return job;
}

void PlacePreviousInput(const VideoProcessor& p, const Workspace& workspace, ScaleJob& job) {
  const Rows previous{p.smoothingBufferSmall, static_cast<std::ptrdiff_t>(PackedInputRow(p))};
  const Rows rows = WithRoomPastRows(p, previous, p.outHeight, workspace.narrowPreviousInput);
  job.previousInput = rows.start;
  job.previousInputStride = rows.stride;
}

}  // namespace vidproc
