// The same-size temporal filter: what surrounds its kernel.
#include <cstring>

#include "frame/frame_checks.h"
#include "frame/frame_memory.h"
#include "frame/runners.h"
#include "kernels/kernel_table.h"
#include "kernels/temporal_job.h"
#include "plan/exactness.h"

namespace vidproc {
namespace {

/// The first frame has nothing to be filtered against and becomes the reference.
void StartHistory(VideoProcessor& p, bool packed) {
  const auto frameBytes = static_cast<std::size_t>(PackedOutputBytes(p));
  std::memmove(p.previousFrame, p.srcFrame, frameBytes);
  if (packed) std::memmove(p.dstFrame, p.srcFrame, frameBytes);
}

void FilterAgainstHistory(VideoProcessor& p, const BufferCapacities& held) {
  const std::uint64_t frameBytes = PackedOutputBytes(p);
  TemporalJob job{};
  job.source = p.srcFrame;
  job.destination = TemporalDestination(p);
  if (TemporalSourceIsInTheWay(p)) {
    std::uint8_t* const copy = UnusedScratch(p, held, job.destination, frameBytes);
    std::memmove(copy, p.srcFrame, static_cast<std::size_t>(frameBytes));
    job.source = copy;
  }
  job.reference = p.previousFrame;
  job.segments = static_cast<std::int32_t>(PackedOutputRow(p));
  job.segmentBytes = static_cast<std::int32_t>(p.outHeight);
  job.form = ChooseForm(TemporalTableIsExact(p.temporalStrength), Kernels().byteRowShape.vectorBytes != 0);
  job.strength = p.temporalStrength;
  job.shift = p.temporalShift;
  Kernels().temporalFilter(job);
}

}  // namespace

bool RunTemporalFilter(VideoProcessor& p, const Workspace* workspace) {
  if (workspace == nullptr || !CanFilterTemporally(p, workspace->held)) return false;
  const bool packed = HasPackedOutput(p);
  if (p.temporalFirstFrame != 0) {
    StartHistory(p, packed);
  } else {
    FilterAgainstHistory(p, workspace->held);
  }
  // kept: a first frame into padded rows shows what the staging buffer held, not the source.
  if (!packed) {
    const std::uint64_t rowBytes = PackedOutputRow(p);
    CopyRows(TemporalDestination(p), rowBytes, p.dstFrame, p.outStride, rowBytes, p.outHeight);
  }
  p.temporalFirstFrame = 0;
  return true;
}

}  // namespace vidproc
