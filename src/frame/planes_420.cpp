#include "frame/planes_420.h"

#include <cstddef>

#include "frame/frame_memory.h"
#include "kernels/kernel_table.h"

namespace vidproc {
namespace {

/// Calls row(luma, chroma, row of a packed 2vuy frame) for every row.
template <class Byte, class RowFunction>
void ForEachRow(const Frame420& planes, Byte* frame, const RowFunction& row) {
  const std::uint64_t rowBytes = std::uint64_t{2} * planes.width;
  for (std::uint32_t y = 0; y < planes.height; ++y) {
    row(planes.luma + std::uint64_t{y} * planes.lumaStride, planes.chroma + std::uint64_t{y / 2} * planes.chromaStride,
        frame + y * rowBytes);
  }
}

}  // namespace

bool CanBeStaged(const Frame420& planes, std::uint64_t stagingBytes) {
  if (planes.luma == nullptr || planes.chroma == nullptr || planes.width < 1 || planes.height < 1) return false;
  if (planes.width >= kMaxFrameSide || planes.height >= kMaxFrameSide) return false;
  if (planes.lumaStride < planes.width || planes.chromaStride < planes.width) return false;
  return std::uint64_t{2} * planes.width * planes.height <= stagingBytes;
}

/// A row of odd width ends with a Cb and a Y that have no partners.
void StageFrame(const Frame420& planes, std::uint8_t* frame) {
  const std::uint32_t last = planes.width - 1;
  const std::ptrdiff_t pairBytes = std::ptrdiff_t{4} * (planes.width / 2);
  ForEachRow(planes, frame, [&](const std::uint8_t* luma, const std::uint8_t* chroma, std::uint8_t* row) {
    Kernels().interleaveRow(luma, chroma, row, pairBytes);
    if (last % 2 != 0) return;
    row[pairBytes] = chroma[last];
    row[pairBytes + 1] = luma[last];
  });
}

/// kept: the Cr that an odd width's last pair lacks is what follows in memory, the next row's first byte; the last row
/// repeats its Cr before.
void UnstageFrame(const std::uint8_t* frame, const Frame420& planes) {
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

}  // namespace vidproc
