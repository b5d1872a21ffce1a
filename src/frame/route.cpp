#include "frame/route.h"

#include "frame/runners.h"

namespace vidproc {

Route ChooseRoute(const VideoProcessor& p, unsigned char plainScaler) {
  using enum Route::Work;
  if (p.cpuLevel < 0) return {kNone};
  if (plainScaler != 0) return {kScaler, &kPlainScaler};
  if (p.isPreProcessor == 0) return {kPostProcessor};
  const bool hasSse41 = p.cpuLevel >= 1;
  const bool sameGeometry = p.outWidth == p.inWidth && p.outHeight == p.inHeight && p.softenLevel == 0;
  // kept: nothing stands in for the temporal filter below SSE4.1; the destination stays as it was.
  if (sameGeometry) return {hasSse41 ? kTemporalFilter : kNone};
  if (p.adaptive == 0 || !hasSse41) return {kScaler, &kPlainScaler};
  if (p.use16Taps != 0) return {kScaler, &kAdaptive16TapTemporal};
  if (p.spatialMotionSmoothing != 0) return {kScaler, &kMotionSmoothing};
  return {kScaler, &kAdaptive};
}

bool RunRoute(VideoProcessor& p, Workspace* workspace, const Route& route, const Source& source) {
  if (route.work == Route::Work::kScaler) return RunScaler(p, workspace, *route.scaler, source);
  source.StagePlanes();
  switch (route.work) {
    case Route::Work::kTemporalFilter:
      return RunTemporalFilter(p, workspace);
    case Route::Work::kPostProcessor:
      return RunPostProcessor(p, workspace, kPost);
    default:
      return false;
  }
}

void RunRouteOnPlanes(VideoProcessor& p, Workspace* workspace, const Route& route, const FramePair420& frames) {
  if (workspace == nullptr || p.scratchA == nullptr || p.scratchB == nullptr) return;
  const std::uint64_t stagingBytes = workspace->held.scratch;
  if (!CanBeStaged(frames.source, stagingBytes) || !CanBeStaged(frames.destination, stagingBytes)) return;
  p.srcFrame = reinterpret_cast<std::uint8_t*>(p.scratchB);
  p.dstFrame = reinterpret_cast<std::uint8_t*>(p.scratchA);
  if (RunRoute(p, workspace, route, Source(p, &frames.source))) UnstageFrame(p.dstFrame, frames.destination);
}

}  // namespace vidproc
