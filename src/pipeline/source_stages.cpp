#include "pipeline/source_stages.h"

#include <cstdlib>
#include <cstring>

#include "kernels/scale_job.h"

namespace vidproc {
namespace {

std::int32_t Pairs(std::int32_t width) { return width / 2 + width % 2; }

}  // namespace

void PlaneSource::Attach(const std::uint8_t* firstRow, std::ptrdiff_t rowStride, bool copies) {
  rows = firstRow;
  stride = rowStride;
  GiveRows(copies || MustCopy() ? nullptr : rows, stride);
}

bool PlaneSource::MustCopy() const { return Shape().RowBytes() < kMinRowBytes; }

void PlaneSource::MakeRow(std::int32_t y, std::uint8_t* out) {
  std::memcpy(out, SourceRow(y), static_cast<std::size_t>(Shape().RowBytes()));
}

/// A frame that is its own output keeps the row where it is.
void PlaneSource::WriteRow(std::int32_t y, std::uint8_t* out) {
  if (out != SourceRow(y)) MakeRow(y, out);
}

PackedSource::PackedSource(std::int32_t width, std::int32_t height, PackedOrder order)
    : PlaneSource({Pairs(width), height, 4}), width(width), order(order) {}

void PackedSource::MakeRow(std::int32_t y, std::uint8_t* out) {
  if (width % 2 == 0) return PlaneSource::MakeRow(y, out);
  const std::uint8_t* const row = SourceRow(y);
  std::memcpy(out, row, 2 * static_cast<std::size_t>(width));
  std::uint8_t* const lastPair = out + 4 * (Pairs(width) - 1);
  const int luma = order == PackedOrder::kLumaFirst ? 0 : 1;
  const int cr = 3 - luma;
  const bool isWhole = std::abs(SourceStride()) >= Shape().RowBytes();
  lastPair[cr] = isWhole ? row[lastPair - out + cr] : lastPair[cr - 4];
  lastPair[luma + 2] = lastPair[luma];
}

SplitStage::SplitStage(Part part, const PlaneShape& shape, Stage& packed, PackedOrder order, std::int32_t lead,
                       const KernelTable& kernels)
    : Stage(shape), part(part), packed(packed), order(order), lead(lead), kernels(kernels) {}

void SplitStage::MakeRow(std::int32_t y, std::uint8_t* out) {
  std::uint8_t* const rest = other->PlaceFor(y);
  std::uint8_t* const luma = part == Part::kLuma ? out : rest;
  std::uint8_t* const pairs = part == Part::kLuma ? rest : out;
  const bool lumaFirst = order == PackedOrder::kLumaFirst;
  kernels.splitRow(packed.Row(y), lumaFirst ? pairs : luma, lumaFirst ? luma : pairs, packed.Shape().RowBytes());
}

/// The luma of an odd width is split into one sample more than there are.
void SplitStage::WriteRow(std::int32_t y, std::uint8_t* out) {
  std::memcpy(out, HeldRow(y), static_cast<std::size_t>(Shape().RowBytes()));
}

}  // namespace vidproc
