// The post-processor's road, deblocking and the same-size temporal filter: what surrounds their kernels.
#include <cstring>

#include "frame/engine.h"
#include "frame/frame_memory.h"
#include "kernels/deblock_job.h"
#include "kernels/kernel_table.h"
#include "kernels/temporal_job.h"
#include "levels/general_forms.h"

namespace vidproc {
namespace {

/// Deblocking was built for frames that keep their size, in packed rows.
bool SuitsDeblocking(const VideoProcessor& p) {
  return p.inWidth == p.outWidth && p.inHeight == p.outHeight && p.inStride == 2 * p.inWidth;
}

}  // namespace

void Engine::RunPostProcessor(VideoProcessor& p, const ScalerTraits& traits) {
  const bool passThrough =
      p.inWidth == p.outWidth && p.inHeight == p.outHeight && p.enhanceStrength == 0 && p.softenLevel == 0;
  const bool deblocks = p.deblockLevel > kDeblockAbove;
  const bool needsBuffers = !passThrough || (deblocks && SuitsDeblocking(p));
  if (needsBuffers ? !MayScale(p, traits) : !FramesAreUsable(p)) return;
  if (deblocks) RunDeblocking(p);
  if (passThrough) {
    PassThrough(p);
  } else {
    RunScaler(p, traits);
  }
}

void Engine::RunDeblocking(VideoProcessor& p) {
  if (p.srcFrame == nullptr) return;
  if (!SuitsDeblocking(p)) {
    if (p.debugPrint != 0) ListDeblockBanks(p);
    return;
  }
  const std::uint64_t frameBytes = std::uint64_t{p.inStride} * p.inHeight;
  if (frameBytes > RoomInWorkingBuffer(p, p.srcFrame).value_or(frameBytes)) return;
  if (p.inWidth < 2 || p.inHeight < 1 || !FitsScaler(p, kPlainScaler) ||
      !RatioReachesNoFurther({p.horizontalUp, p.horizontalDown}, p.outWidth, p.inWidth) || !ReserveWorkspace(p)) {
    return;
  }
  if (p.debugPrint != 0) ListDeblockBanks(p);

  Workspace& workspace = *p.workspace;
  DeblockJob job{};
  job.frame = p.srcFrame;
  job.width = static_cast<std::int32_t>(p.inWidth);
  job.height = static_cast<std::int32_t>(p.inHeight);
  job.generalForm = GeneralFormsOnly();
  job.testPattern = p.deblockTestPattern != 0;
  job.edgeSensitivity = static_cast<std::int16_t>((51 - p.deblockLevel) >> 2);
  for (int t = 0; t < 8; ++t) {
    job.verticalTaps[t] = p.deblockVerticalFilterLanes[0][t][0];
    job.horizontalTaps[t] = p.deblockHorizontalFilterLanes[0][t][0];
  }
  for (std::int32_t m = 0; m < job.width; ++m) {
    workspace.deblockSources[m] = static_cast<std::int32_t>(std::int64_t{m} * p.horizontalDown / p.horizontalUp);
  }
  job.sources = workspace.deblockSources;
  job.strip = workspace.strip;
  job.rowsAbove = workspace.deblockRows;
  Kernels().deblock(job);
}

void Engine::RunTemporalFilter(VideoProcessor& p) {
  const std::uint64_t rowBytes = std::uint64_t{2} * p.outWidth;
  const std::uint64_t frameBytes = rowBytes * p.outHeight;
  const bool packed = p.outStride == rowBytes;
  if (!FramesAreUsable(p) || p.previousFrame == nullptr || frameBytes > p.previousFrameBytes) return;
  if (!packed && (p.scratchA == nullptr || frameBytes > p.scratchBytes)) return;
  // The source is read as one packed block of the output's size.
  if (frameBytes > RoomInWorkingBuffer(p, p.srcFrame).value_or(SourceExtent(p))) return;

  auto* const scratchA = reinterpret_cast<std::uint8_t*>(p.scratchA);
  std::uint8_t* const working = packed ? p.dstFrame : scratchA;
  const std::uint8_t* source = p.srcFrame;
  const bool inPlace = source == working;
  if (p.temporalFirstFrame != 0) {
    std::memmove(p.previousFrame, source, static_cast<std::size_t>(frameBytes));
    if (packed) std::memmove(p.dstFrame, source, static_cast<std::size_t>(frameBytes));
  } else {
    if (!inPlace && (Overlap(source, frameBytes, working, frameBytes) ||
                     Overlap(source, frameBytes, p.previousFrame, frameBytes))) {
      if (p.scratchA == nullptr || p.scratchB == nullptr || frameBytes > p.scratchBytes) return;
      std::uint8_t* const copy = SparePlace(p, working, frameBytes);
      std::memmove(copy, source, static_cast<std::size_t>(frameBytes));
      source = copy;
    }
    TemporalJob job{};
    job.source = source;
    job.reference = p.previousFrame;
    job.destination = working;
    job.segments = static_cast<std::int32_t>(rowBytes);
    job.segmentBytes = static_cast<std::int32_t>(p.outHeight);
    job.generalForm = GeneralFormsOnly();
    job.strength = p.temporalStrength;
    job.shift = p.temporalShift;
    Kernels().temporalFilter(job);
  }
  // kept: a first frame into padded rows shows what the staging buffer held, not the source.
  if (!packed) CopyRows(scratchA, rowBytes, p.dstFrame, p.outStride, rowBytes, p.outHeight);
  p.temporalFirstFrame = 0;
  if (p.workspace != nullptr) p.workspace->frameProduced = true;
}

}  // namespace vidproc
