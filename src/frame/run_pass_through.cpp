// Frames of equal sizes that nothing filters.
#include "frame/frame_memory.h"
#include "frame/runners.h"
#include "kernels/kernel_table.h"

namespace vidproc {

/// kept: the noise counts its rows from the frame's first byte by its own pitch, whatever the destination's stride.
void PassThrough(VideoProcessor& p, const BufferCapacities& held) {
  const std::uint64_t rowBytes = PackedOutputRow(p);
  Rows source = Source(p).FrameRows();
  const bool hasRoomForCopy = p.scratchA != nullptr && p.scratchB != nullptr && rowBytes * p.inHeight <= held.scratch;
  if (hasRoomForCopy) source = CopyIfOverlapped(p, held, source);
  CopyRows(source.start, static_cast<std::uint64_t>(source.stride), p.dstFrame, p.outStride, rowBytes, p.outHeight);
  NoiseField noise;
  if (!StartFrameNoise(p, NoiseRule::kSizedByOutput, noise)) return;
  const std::uint64_t extent = DestinationExtent(p);
  if (noise.pitch > 0xFFFF) {
    AddNoiseWhole(noise, p.dstFrame, extent, extent, extent);
  } else {
    Kernels().addNoise(noise, p.dstFrame, 0, extent);
  }
}

}  // namespace vidproc
