// The post-processor: deblocking, then the scaler or the pass-through.
#include "frame/bank_listing.h"
#include "frame/frame_checks.h"
#include "frame/runners.h"

namespace vidproc {
namespace {

bool KeepsPicture(const VideoProcessor& p) {
  return p.inWidth == p.outWidth && p.inHeight == p.outHeight && p.enhanceStrength == 0 && p.softenLevel == 0;
}

}  // namespace

bool RunPostProcessor(VideoProcessor& p, Workspace* workspace, const ScalerTraits& traits) {
  const bool passesThrough = KeepsPicture(p);
  const bool deblocks = p.deblockLevel > kDeblockAbove;
  const bool changesSource = deblocks && SuitsDeblocking(p);
  // What the scaler needs, deblocking needs.
  const bool needsBuffers = !passesThrough || changesSource;
  const BufferCapacities held = HeldBy(workspace);
  if (needsBuffers ? !PrepareToScale(p, workspace, traits) : !FramesAreUsable(p, held)) return false;
  if (deblocks && p.debugPrint != 0) ListDeblockBanks(p);
  if (changesSource) DeblockFrame(p, *workspace);
  if (passesThrough) {
    PassThrough(p, held);
  } else {
    Scale(p, *workspace, traits, Source(p));
  }
  return true;
}

}  // namespace vidproc
