// Deblocking of the source frame in place.
#include "filters/deblocking_bank.h"
#include "frame/bank_listing.h"
#include "frame/frame_checks.h"
#include "frame/runners.h"
#include "kernels/deblock_job.h"
#include "kernels/kernel_table.h"
#include "plan/exactness.h"

namespace vidproc {

void DeblockFrame(const VideoProcessor& p, const Workspace& workspace) {
  DeblockJob job{};
  job.frame = p.srcFrame;
  job.width = static_cast<std::int32_t>(p.inWidth);
  job.height = static_cast<std::int32_t>(p.inHeight);
  job.testPattern = p.deblockTestPattern != 0;
  job.edgeSensitivity = filters::EdgeSensitivity(p.deblockLevel);
  for (int t = 0; t < 8; ++t) {
    job.verticalTaps[t] = p.deblockVerticalFilterLanes[0][t][0];
    job.horizontalTaps[t] = p.deblockHorizontalFilterLanes[0][t][0];
  }
  job.form = ChooseForm(SymmetricSumsAreExact(job.verticalTaps) && SymmetricSumsAreExact(job.horizontalTaps), true);
  for (std::int32_t m = 0; m < job.width; ++m) {
    workspace.deblockSources[m] = static_cast<std::int32_t>(std::int64_t{m} * p.horizontalDown / p.horizontalUp);
  }
  job.sources = workspace.deblockSources;
  job.strip = workspace.strip;
  job.rowsAbove = workspace.deblockRows;
  Kernels().deblock(job);
}

bool RunDeblocking(VideoProcessor& p, Workspace* workspace) {
  if (p.srcFrame == nullptr) return false;
  const bool suits = SuitsDeblocking(p);
  if (suits && (workspace == nullptr || !CanDeblock(p, workspace->held) || !workspace->TryToReserve(FrameSizesOf(p)))) {
    return false;
  }
  if (p.debugPrint != 0) ListDeblockBanks(p);
  if (suits) DeblockFrame(p, *workspace);
  return suits;
}

}  // namespace vidproc
