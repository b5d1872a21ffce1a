// The scalers: checks, the job, noise, and the state that a frame leaves behind.
#include "frame/frame_checks.h"
#include "frame/make_scale_job.h"
#include "frame/runners.h"

namespace vidproc {
namespace {

SourcePlanes PlanesToRead(const Frame420& planes) {
  return {planes.luma, planes.chroma, static_cast<std::ptrdiff_t>(planes.lumaStride),
          static_cast<std::ptrdiff_t>(planes.chromaStride)};
}

void RefreshPreviousInput(const VideoProcessor& p, const ScaleJob& job) {
  const std::uint64_t rowBytes = PackedInputRow(p);
  CopyRows(job.source, static_cast<std::uint64_t>(job.sourceStride), p.smoothingBufferSmall, rowBytes, rowBytes,
           p.inHeight);
}

void RunKernel(VideoProcessor& p, const Workspace& workspace, const ScalerTraits& traits, ScaleJob& job) {
  NoiseField noise;
  const bool hasNoise = StartFrameNoise(p, traits.noise, noise);
  // Rows of 64 KB and more take their noise's source from elsewhere in the frame: only whole frames will do.
  const bool wholeFrameNoise = hasNoise && noise.pitch > 0xFFFF;
  job.noise = hasNoise && !wholeFrameNoise ? &noise : nullptr;
  if (traits.kernel.smoothsMotion) {
    if (job.firstFrame) RefreshPreviousInput(p, job);
    PlacePreviousInput(p, workspace, job);
  }
  (Kernels().*traits.run)(job);
  if (traits.kernel.smoothsMotion) RefreshPreviousInput(p, job);
  if (wholeFrameNoise) {
    AddNoiseWhole(noise, p.dstFrame, PackedOutputRow(p), p.outStride, PackedOutputBytes(p));
  }
}

}  // namespace

bool PrepareToScale(const VideoProcessor& p, Workspace* workspace, const ScalerTraits& traits) {
  return workspace != nullptr && CanScale(p, workspace->held, traits) && workspace->TryToReserve(FrameSizesOf(p));
}

void Scale(VideoProcessor& p, Workspace& workspace, const ScalerTraits& traits, const Source& source) {
  if (p.debugPrint != 0) traits.listBanks(p);
  UpdatePlan(p, workspace, traits);
  SourcePlanes planes;
  const bool readsPlanes = source.planes != nullptr && CanReadPlanes(p, workspace, traits, *source.planes);
  if (readsPlanes) {
    planes = PlanesToRead(*source.planes);
  } else {
    source.StagePlanes();
  }
  ScaleJob job = MakeScaleJob(p, workspace, traits, source, readsPlanes ? &planes : nullptr);
  RunKernel(p, workspace, traits, job);
  if (traits.hasHistory) p.temporalFirstFrame = 0;
}

bool RunScaler(VideoProcessor& p, Workspace* workspace, const ScalerTraits& traits, const Source& source) {
  if (!PrepareToScale(p, workspace, traits)) {
    source.StagePlanes();
    return false;
  }
  Scale(p, *workspace, traits, source);
  return true;
}

}  // namespace vidproc
