#include "frame/frame_checks.h"

#include "frame/frame_memory.h"
#include "plan/phase_position.h"

namespace vidproc {
namespace {

bool Holds(const void* buffer, std::uint64_t bytes, std::uint64_t need) { return buffer != nullptr && need <= bytes; }

bool HoldsScratch(const VideoProcessor& p, const BufferCapacities& held, std::uint64_t need) {
  return Holds(p.scratchA, held.scratch, need) && Holds(p.scratchB, held.scratch, need);
}

bool SidesAreProcessed(const VideoProcessor& p) {
  return p.inWidth < kMaxFrameSide && p.inHeight < kMaxFrameSide && p.outWidth < kMaxFrameSide &&
         p.outHeight < kMaxFrameSide;
}

/// Chroma stays inside where luma does: it has half the outputs on half the samples, both rounded up.
bool RatiosStayInside(const VideoProcessor& p) {
  return StaysInside({p.horizontalUp, p.horizontalDown}, p.outWidth, p.inWidth) &&
         StaysInside({p.verticalUp, p.verticalDown}, p.outHeight, p.inHeight);
}

}  // namespace

std::optional<std::uint64_t> RoomInWorkingBuffer(const VideoProcessor& p, const BufferCapacities& held,
                                                 const void* start) {
  const struct {
    const void* start;
    std::uint64_t bytes;
  } buffers[] = {{p.scratchA, held.scratch},
                 {p.scratchB, held.scratch},
                 {p.previousFrame, held.previousFrame},
                 {p.smoothingBufferLarge, held.smoothingLarge},
                 {p.smoothingBufferSmall, held.smoothingSmall}};
  const auto address = reinterpret_cast<std::uintptr_t>(start);
  for (const auto& buffer : buffers) {
    const auto first = reinterpret_cast<std::uintptr_t>(buffer.start);
    if (first != 0 && address >= first && address - first < buffer.bytes) return buffer.bytes - (address - first);
  }
  return std::nullopt;
}

bool FramesAreUsable(const VideoProcessor& p, const BufferCapacities& held) {
  if (p.srcFrame == nullptr || p.dstFrame == nullptr) return false;
  if (p.inWidth < 2 || p.outWidth < 2 || p.inHeight < 1 || p.outHeight < 1) return false;
  if (p.inStride / 2 < p.inWidth || p.outStride / 2 < p.outWidth) return false;
  const auto sourceRoom = RoomInWorkingBuffer(p, held, p.srcFrame);
  if (sourceRoom && SourceExtent(p) > *sourceRoom) return false;
  const auto destinationRoom = RoomInWorkingBuffer(p, held, p.dstFrame);
  return !destinationRoom || (HasPackedOutput(p) && DestinationExtent(p) <= *destinationRoom);
}

bool FitsScaler(const VideoProcessor& p, const BufferCapacities& held, const ScalerTraits& traits) {
  if (!SidesAreProcessed(p)) return false;
  const std::uint64_t inRow = std::uint64_t{2} * p.inWidth;
  const std::uint64_t outRow = std::uint64_t{2} * p.outWidth;
  const std::uint64_t packedOutput = outRow * p.outHeight;
  const std::uint64_t edgeColumns = traits.kernel.horizontalTaps > 8 ? 64 : 32;
  if (!Holds(p.scratchA, held.scratch, (p.inHeight + std::uint64_t{8}) * inRow) ||
      !Holds(p.scratchA, held.scratch, (inRow + edgeColumns) * p.outHeight * 2) ||
      !Holds(p.scratchB, held.scratch, packedOutput)) {
    return false;
  }
  if (traits.hasHistory && !Holds(p.previousFrame, held.previousFrame, packedOutput)) return false;
  if (!traits.kernel.smoothsMotion) return true;
  const std::uint64_t largerHeight = p.inHeight > p.outHeight ? p.inHeight : p.outHeight;
  const std::uint64_t largerRow = inRow > outRow ? inRow : outRow;
  return Holds(p.smoothingBufferSmall, held.smoothingSmall, inRow * largerHeight) &&
         Holds(p.smoothingBufferLarge, held.smoothingLarge, 2 * largerRow * p.outHeight);
}

bool CanScale(const VideoProcessor& p, const BufferCapacities& held, const ScalerTraits& traits) {
  return FramesAreUsable(p, held) && FitsScaler(p, held, traits) && RatiosStayInside(p);
}

bool SuitsDeblocking(const VideoProcessor& p) {
  return p.inWidth == p.outWidth && p.inHeight == p.outHeight && p.inStride == 2 * p.inWidth;
}

bool CanDeblock(const VideoProcessor& p, const BufferCapacities& held) {
  if (p.inWidth < 2 || p.inHeight < 1) return false;
  const std::uint64_t frameBytes = std::uint64_t{p.inStride} * p.inHeight;
  return frameBytes <= RoomInWorkingBuffer(p, held, p.srcFrame).value_or(frameBytes) &&
         FitsScaler(p, held, kPlainScaler) && StaysInside({p.horizontalUp, p.horizontalDown}, p.outWidth, p.inWidth);
}

bool CanFilterTemporally(const VideoProcessor& p, const BufferCapacities& held) {
  if (!FramesAreUsable(p, held)) return false;
  const std::uint64_t frameBytes = PackedOutputBytes(p);
  return Holds(p.previousFrame, held.previousFrame, frameBytes) &&
         (HasPackedOutput(p) || Holds(p.scratchA, held.scratch, frameBytes)) &&
         frameBytes <= RoomInWorkingBuffer(p, held, p.srcFrame).value_or(SourceExtent(p)) &&
         (!TemporalSourceIsInTheWay(p) || HoldsScratch(p, held, frameBytes));
}

bool TemporalSourceIsInTheWay(const VideoProcessor& p) {
  const std::uint64_t frameBytes = PackedOutputBytes(p);
  const std::uint8_t* const working = TemporalDestination(p);
  return p.temporalFirstFrame == 0 && p.srcFrame != working &&
         (Overlap(p.srcFrame, frameBytes, working, frameBytes) ||
          Overlap(p.srcFrame, frameBytes, p.previousFrame, frameBytes));
}

}  // namespace vidproc
