#include "pipeline/deblock_step.h"

#include <algorithm>
#include <numeric>

#include "filters/deblocking_bank.h"
#include "plan/exactness.h"

namespace vidproc {
namespace {

constexpr int kBits = 7;

/// Rows of whole pairs.
std::int32_t EvenWidth(const PictureRows& rows) {
  const std::int32_t width = rows.luma->Shape().width;
  return width + width % 2;
}

}  // namespace

DeblockStep::DeblockStep(std::int32_t level, const PictureRows& rows, const KernelTable& kernels)
    : WholeFrameStep(rows.luma->Shape().width, 2 * EvenWidth(rows), rows, kernels), kernels(kernels) {
  job.width = EvenWidth(rows);
  job.height = rows.luma->Shape().height;
  job.edgeSensitivity = static_cast<std::int16_t>((51 - level) >> 2);
  std::int16_t bank[filters::kPhases][filters::kDeblockingTaps];
  filters::DesignDeblockingBank(static_cast<std::uint8_t>(level), filters::kDeblockingTaps, kBits, bank);
  std::copy_n(bank[0], filters::kDeblockingTaps, job.verticalTaps);
  std::copy_n(bank[0], filters::kDeblockingTaps, job.horizontalTaps);
  job.form = ChooseForm(SymmetricSumsAreExact(job.verticalTaps), true);

  sources.resize(static_cast<std::size_t>(job.width));
  std::iota(sources.begin(), sources.end(), 0);
  const auto rowBytes = 2 * static_cast<std::size_t>(job.width);
  constexpr std::size_t kStripValues = kMaxStripRows / 2;
  const std::size_t pitch = rowBytes + kRowSlack / 2;
  rowMemory.resize(kStripValues * pitch);
  columnMemory.resize(kStripValues * (rowBytes + 2 * kEdgeColumns + kRowSlack));
  outColumns.resize(kMaxStripRows * (rowBytes + kRowSlack));
  rowsAbove.resize(3 * (rowBytes + kRowSlack));
  job.sources = sources.data();
  job.strip.rows = rowMemory.data();
  job.strip.columns = columnMemory.data();
  job.strip.outColumns = outColumns.data();
  job.strip.rowPitch = static_cast<std::ptrdiff_t>(pitch);
  job.rowsAbove = rowsAbove.data();
}

const PackedFrame& DeblockStep::Work(PackedFrame& frame) {
  job.frame = frame.bytes.data();
  kernels.deblock(job);
  return frame;
}

}  // namespace vidproc
