#include "pipeline/deblock_step.h"

#include <algorithm>
#include <numeric>

#include "filters/deblocking_bank.h"
#include "plan/exactness.h"
#include "plan/strip_sizes.h"

namespace vidproc {
namespace {

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
  job.edgeSensitivity = filters::EdgeSensitivity(level);
  std::int16_t bank[filters::kPhases][filters::kDeblockingTaps];
  filters::DesignDeblockingBank(static_cast<std::uint8_t>(level), filters::kDeblockingTaps, filters::kDeblockingBits,
                                bank);
  std::copy_n(bank[0], filters::kDeblockingTaps, job.verticalTaps);
  std::copy_n(bank[0], filters::kDeblockingTaps, job.horizontalTaps);
  job.form = ChooseForm(SymmetricSumsAreExact(job.verticalTaps), true);

  sources.resize(static_cast<std::size_t>(job.width));
  std::iota(sources.begin(), sources.end(), 0);
  const std::uint64_t rowBytes = 2 * static_cast<std::uint64_t>(job.width);
  const auto reserve = [](auto& memory, std::uint64_t count) { memory.resize(static_cast<std::size_t>(count)); };
  reserve(rowMemory, StripRowValues(rowBytes));
  reserve(columnMemory, StripColumnValues(rowBytes));
  reserve(outColumns, StripOutputSize(rowBytes));
  reserve(rowsAbove, RowsAboveBytes(rowBytes));
  job.sources = sources.data();
  job.strip.rows = rowMemory.data();
  job.strip.columns = columnMemory.data();
  job.strip.outColumns = outColumns.data();
  job.strip.rowPitch = static_cast<std::ptrdiff_t>(StripRowPitch(rowBytes));
  job.rowsAbove = rowsAbove.data();
}

const PackedFrame& DeblockStep::Work(PackedFrame& frame) {
  job.frame = frame.bytes.data();
  kernels.deblock(job);
  return frame;
}

}  // namespace vidproc
