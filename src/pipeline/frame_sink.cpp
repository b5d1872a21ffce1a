#include "pipeline/frame_sink.h"

#include <cstdlib>
#include <cstring>

namespace vidproc {

FrameSink::FrameSink(const FrameShape& shape, const PictureRows& rows, const KernelTable& kernels)
    : shape(shape), rows(rows), kernels(kernels) {
  for (Stage* const stage : {rows.luma, rows.pairs, rows.cb, rows.cr}) {
    if (stage != nullptr) stage->Hold(1);
  }
  if (rows.pairs == nullptr) joined.resize(2 * static_cast<std::size_t>(ChromaColumns(shape)));
}

void FrameSink::Write(const OutputPlanes& planes) {
  if (IsPacked(shape.format)) {
    for (std::int32_t y = 0; y < shape.height; ++y) WritePacked(planes, y);
    return;
  }
  const std::int32_t lumaRows = HalvesChromaRows(shape.format) ? 2 : 1;
  for (std::int32_t y = 0; y < shape.height; ++y) {
    rows.luma->WriteRow(y, planes.plane[0] + y * planes.stride[0]);
    if ((y + 1) % lumaRows == 0 || y + 1 == shape.height) WriteChroma(planes, y / lumaRows);
  }
}

const std::uint8_t* FrameSink::PairsRow(std::int32_t y) {
  if (rows.pairs != nullptr) return rows.pairs->Row(y);
  kernels.interleaveRow(rows.cr->Row(y), rows.cb->Row(y), joined.data(), 2 * std::ptrdiff_t{ChromaColumns(shape)});
  return joined.data();
}

void FrameSink::WriteChroma(const OutputPlanes& planes, std::int32_t y) {
  std::uint8_t* const first = planes.plane[1] + y * planes.stride[1];
  const std::ptrdiff_t pairBytes = 2 * std::ptrdiff_t{ChromaColumns(shape)};
  if (shape.format == PixelFormat::kNv12) {
    if (rows.pairs != nullptr) return rows.pairs->WriteRow(y, first);
    return kernels.interleaveRow(rows.cr->Row(y), rows.cb->Row(y), first, pairBytes);
  }
  std::uint8_t* const second = planes.plane[2] + y * planes.stride[2];
  if (rows.pairs != nullptr) return kernels.splitRow(rows.pairs->Row(y), second, first, pairBytes);
  rows.cb->WriteRow(y, first);
  rows.cr->WriteRow(y, second);
}

void FrameSink::WritePacked(const OutputPlanes& planes, std::int32_t y) {
  std::uint8_t* const out = planes.plane[0] + y * planes.stride[0];
  const std::uint8_t* const luma = rows.luma->Row(y);
  const std::uint8_t* const pairs = PairsRow(y);
  const bool lumaFirst = shape.format == PixelFormat::kYuyv;
  const std::ptrdiff_t wholePairs = shape.width / 2;
  kernels.interleaveRow(lumaFirst ? pairs : luma, lumaFirst ? luma : pairs, out, 4 * wholePairs);
  if (shape.width % 2 == 0) return;
  const bool hasRoom = std::abs(planes.stride[0]) >= 4 * (wholePairs + 1);
  FinishOddRow(out + 4 * wholePairs, luma + 2 * wholePairs, pairs + 2 * wholePairs, hasRoom);
}

/// The last pair of an odd width has one luma sample; where the row has room, it is written twice.
void FrameSink::FinishOddRow(std::uint8_t* lastPair, const std::uint8_t* luma, const std::uint8_t* pairs,
                             bool hasRoom) const {
  const int lumaPlace = shape.format == PixelFormat::kYuyv ? 0 : 1;
  lastPair[lumaPlace] = luma[0];
  lastPair[1 - lumaPlace] = pairs[0];
  if (!hasRoom) return;
  lastPair[lumaPlace + 2] = luma[0];
  lastPair[3 - lumaPlace] = pairs[1];
}

}  // namespace vidproc
