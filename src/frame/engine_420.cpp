// 4:2:0 frames: staged as 2vuy in scratchB, processed into scratchA, split back into planes.
#include "frame/engine.h"
#include "frame/frame_memory.h"
#include "kernels/kernel_table.h"

namespace vidproc {
namespace {

bool IsUsable(const Frame420& frame, std::uint64_t scratchBytes) {
  if (frame.luma == nullptr || frame.chroma == nullptr || frame.width < 1 || frame.height < 1) return false;
  if (frame.width >= kMaxFrameSide || frame.height >= kMaxFrameSide) return false;
  if (frame.lumaStride < frame.width || frame.chromaStride < frame.width) return false;
  return std::uint64_t{2} * frame.width * frame.height <= scratchBytes;
}

/// Calls row(luma, chroma, row of a packed 2vuy frame) for every row; one chroma row serves two luma rows.
template <class RowFunction>
void ForEachRow(const Frame420& planes, std::uint8_t* frame, const RowFunction& row) {
  const std::uint64_t rowBytes = std::uint64_t{2} * planes.width;
  for (std::uint32_t y = 0; y < planes.height; ++y) {
    row(planes.luma + std::uint64_t{y} * planes.lumaStride, planes.chroma + std::uint64_t{y / 2} * planes.chromaStride,
        frame + y * rowBytes);
  }
}

/// A row of odd width ends with a Cb and a Y that have no partners.
void Stage(const Frame420& planes, std::uint8_t* frame) {
  const std::uint32_t last = planes.width - 1;
  const std::ptrdiff_t pairBytes = std::ptrdiff_t{4} * (planes.width / 2);
  ForEachRow(planes, frame, [&](const std::uint8_t* luma, const std::uint8_t* chroma, std::uint8_t* row) {
    Kernels().interleaveRow(luma, chroma, row, pairBytes);
    if (last % 2 != 0) return;
    row[pairBytes] = chroma[last];
    row[pairBytes + 1] = luma[last];
  });
}

/// kept: the rows 2j and 2j + 1 both write chroma row j; the second stays. kept: the Cr that an odd width's last pair
/// lacks is what follows in memory, the next row's first byte; the last row repeats its Cr before.
void Unstage(const Frame420& planes, std::uint8_t* frame) {
  if (planes.width < 2) return;  // no Cr at all, and no processor makes frames of that width
  const std::uint32_t last = planes.width - 1;
  const std::ptrdiff_t pairBytes = std::ptrdiff_t{4} * (planes.width / 2);
  const std::uint8_t* const lastRow = frame + std::uint64_t{2} * planes.width * (planes.height - 1);
  ForEachRow(planes, frame, [&](std::uint8_t* luma, std::uint8_t* chroma, const std::uint8_t* row) {
    Kernels().splitRow(row, luma, chroma, pairBytes);
    if (last % 2 != 0) return;
    chroma[last] = row[pairBytes];
    luma[last] = row[pairBytes + 1];
    if (planes.chromaStride > planes.width) chroma[last + 1] = row[row == lastRow ? pairBytes - 2 : pairBytes + 2];
  });
}

}  // namespace

bool Engine::ReadsPlanes(VideoProcessor& p, const ScalerTraits& traits, const Frame420& planes) {
  if (planes.width < kMinRowBytes || planes.width != p.inWidth || planes.height != p.inHeight) return false;
  if (!MayScale(p, traits)) return false;
  return UpdatePlan(p, traits).byteRowPlan != nullptr;
}

int Engine::Go420(VideoProcessor& p, const FramePair420& frames, unsigned char plainScaler) {
  if (p.scratchA == nullptr || p.scratchB == nullptr || p.workspace == nullptr) return 0;
  if (!IsUsable(frames.source, p.scratchBytes) || !IsUsable(frames.destination, p.scratchBytes)) return 0;
  p.srcFrame = reinterpret_cast<std::uint8_t*>(p.scratchB);
  p.dstFrame = reinterpret_cast<std::uint8_t*>(p.scratchA);
  const SourcePlanes planes{frames.source.luma, frames.source.chroma,
                            static_cast<std::ptrdiff_t>(frames.source.lumaStride),
                            static_cast<std::ptrdiff_t>(frames.source.chromaStride)};
  const bool fused = RunsPlainScaler(p, plainScaler) && ReadsPlanes(p, kPlainScaler, frames.source);
  if (fused) {
    p.workspace->planes = &planes;
  } else {
    Stage(frames.source, p.srcFrame);
  }
  p.workspace->frameProduced = false;
  p.Go(plainScaler);
  p.workspace->planes = nullptr;
  if (p.workspace->frameProduced) Unstage(frames.destination, reinterpret_cast<std::uint8_t*>(p.scratchA));
  return 0;
}

}  // namespace vidproc
