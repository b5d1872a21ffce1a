#include "frame/source.h"

namespace vidproc {

std::uint8_t* UnusedScratch(const VideoProcessor& p, const BufferCapacities& held, const std::uint8_t* written,
                            std::uint64_t bytes) {
  auto* const scratchB = reinterpret_cast<std::uint8_t*>(p.scratchB);
  return Overlap(written, bytes, scratchB, held.scratch) ? reinterpret_cast<std::uint8_t*>(p.scratchA) : scratchB;
}

Rows CopyIfOverlapped(const VideoProcessor& p, const BufferCapacities& held, const Rows& source) {
  if (!Overlap(source.start, SourceExtent(p), p.dstFrame, DestinationExtent(p))) return source;
  const std::uint64_t rowBytes = PackedInputRow(p);
  std::uint8_t* const copy = UnusedScratch(p, held, p.dstFrame, DestinationExtent(p));
  CopyRows(source.start, static_cast<std::uint64_t>(source.stride), copy, rowBytes, rowBytes, p.inHeight);
  return {copy, static_cast<std::ptrdiff_t>(rowBytes)};
}

}  // namespace vidproc
