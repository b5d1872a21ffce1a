#include "pipeline/history.h"

#include <utility>

namespace vidproc {
namespace {

bool CanContinue(DenoiseStage& from, const DenoiseStage& to, Kept what) { return from.HasKept(what) && to.Keeps(what); }

void MoveComponent(DenoiseStage& from, DenoiseStage& to) {
  for (const Kept what : kAllKept) {
    if (!CanContinue(from, to, what)) continue;
    std::swap(from.KeptRows(what), to.KeptRows(what));
    to.HasKept(what) = true;
    from.HasKept(what) = false;
  }
}

void JoinPlanes(DenoiseStage& cb, DenoiseStage& cr, DenoiseStage& pairs, const KernelTable& kernels) {
  const PlaneShape& shape = pairs.Shape();
  for (const Kept what : kAllKept) {
    if (!CanContinue(cb, pairs, what)) continue;
    for (std::int32_t y = 0; y < shape.height; ++y) {
      kernels.interleaveRow(cr.KeptRows(what).Row(y), cb.KeptRows(what).Row(y), pairs.KeptRows(what).Row(y),
                            shape.RowBytes());
    }
    pairs.HasKept(what) = true;
  }
}

void SplitPairs(DenoiseStage& pairs, DenoiseStage& cb, DenoiseStage& cr, const KernelTable& kernels) {
  const PlaneShape& shape = pairs.Shape();
  for (const Kept what : kAllKept) {
    if (!CanContinue(pairs, cb, what)) continue;
    for (std::int32_t y = 0; y < shape.height; ++y) {
      kernels.splitRow(pairs.KeptRows(what).Row(y), cr.KeptRows(what).Row(y), cb.KeptRows(what).Row(y),
                       shape.RowBytes());
    }
    cb.HasKept(what) = true;
    cr.HasKept(what) = true;
  }
}

}  // namespace

void MoveHistory(const Denoisers& from, const Denoisers& to, const KernelTable& kernels) noexcept {
  if (from[0] == nullptr || to[0] == nullptr) return;
  MoveComponent(*from[0], *to[0]);
  const bool fromPlanes = from[2] != nullptr;
  const bool toPlanes = to[2] != nullptr;
  if (fromPlanes && !toPlanes) return JoinPlanes(*from[1], *from[2], *to[1], kernels);
  if (!fromPlanes && toPlanes) return SplitPairs(*from[1], *to[1], *to[2], kernels);
  MoveComponent(*from[1], *to[1]);
  if (toPlanes) MoveComponent(*from[2], *to[2]);
}

}  // namespace vidproc
