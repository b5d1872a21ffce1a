#include "pipeline/scaling_stages.h"

#include <algorithm>
#include <numeric>

#include "plan/exactness.h"
#include "plan/row_taps.h"

namespace vidproc {
namespace {

PlaneShape WithHeight(PlaneShape shape, std::size_t height) {
  shape.height = static_cast<std::int32_t>(height);
  return shape;
}

PlaneShape WithWidth(PlaneShape shape, std::size_t width) {
  shape.width = static_cast<std::int32_t>(width);
  return shape;
}

ByteRowShape ShapeOf(const KernelTable& kernels) {
  return ChooseForm(true, kernels.byteRowShape.vectorBytes != 0) == Form::kProven ? kernels.byteRowShape
                                                                                  : ByteRowShape{};
}

HorizontalRowRequest RequestOf(const PlaneShape& input, const AxisPass& pass, const KernelTable& kernels) {
  return {.bank = pass.bank,
          .taps = pass.taps,
          .shift = pass.precisionBits,
          .positions = pass.positions.data(),
          .outputs = static_cast<std::int32_t>(pass.positions.size()),
          .inputs = input.width,
          .step = input.sampleBytes,
          .shape = ShapeOf(kernels)};
}

}  // namespace

VerticalPass::VerticalPass(Stage& input, const AxisPass& pass, const KernelTable& kernels)
    : Stage(WithHeight(input.Shape(), pass.positions.size())),
      input(input),
      kernels(kernels),
      positions(pass.positions),
      rowShift(pass.repeatedSize > 0 ? 1 : 0),
      lastRow((pass.repeatedSize > 0 ? pass.repeatedSize : input.Shape().height) - 1),
      precisionBits(pass.precisionBits) {
  for (int phase = 0; phase < kPhases; ++phase) {
    taps[phase] = PlanVerticalTaps(pass.bank[phase], pass.taps, ShapeOf(kernels));
    std::int32_t* const order = topDown[phase];
    std::iota(order, order + taps[phase].count, 0);
    std::sort(order, order + taps[phase].count, [&](int a, int b) { return taps[phase].row[a] < taps[phase].row[b]; });
  }
  input.Hold(pass.taps);
}

/// Rows of the caller's frame; and, to be fetched ahead, the last ones under the next output row.
void VerticalPass::TakeGivenRows(std::int32_t y, const VerticalTaps& phase, VerticalRowJob& job) const {
  const std::int32_t source = positions[static_cast<std::size_t>(y)].source;
  for (std::int32_t t = 0; t < phase.count; ++t) job.rows[t] = input.GivenRow(InputRow(source + phase.row[t]));
  const std::size_t next = static_cast<std::size_t>(std::min(y + 1, Shape().height - 1));
  const std::int32_t phaseOfNext = positions[next].phase;
  const VerticalTaps& nextTaps = taps[phaseOfNext];
  const std::int32_t last = positions[next].source + nextTaps.row[topDown[phaseOfNext][nextTaps.count - 1]];
  job.ahead[0] = input.GivenRow(InputRow(last));
  job.ahead[1] = input.GivenRow(InputRow(last - 1));
}

/// From the top down, whatever the order of the taps: a row made early would push out what those above it are made
/// from.
void VerticalPass::TakeHeldRows(const PhasePosition& position, VerticalRowJob& job) {
  for (std::int32_t i = 0; i < job.taps->count; ++i) {
    const std::int32_t t = topDown[position.phase][i];
    job.rows[t] = input.HeldRow(InputRow(position.source + job.taps->row[t]));
  }
}

void VerticalPass::MakeRow(std::int32_t y, std::uint8_t* out) {
  const PhasePosition& position = positions[static_cast<std::size_t>(y)];
  const VerticalTaps& phase = taps[position.phase];
  VerticalRowJob job;
  job.taps = &phase;
  if (input.GivesRows()) {
    TakeGivenRows(y, phase, job);
  } else {
    TakeHeldRows(position, job);
    job.ahead[0] = nullptr;
    job.ahead[1] = nullptr;
  }
  job.shift = precisionBits;
  job.bytes = Shape().RowBytes();
  job.out = out;
  kernels.filterRowsVertically(job);
}

HorizontalPass::HorizontalPass(Stage& input, const AxisPass& pass, const KernelTable& kernels)
    : Stage(WithWidth(input.Shape(), pass.positions.size())),
      input(input),
      kernels(kernels),
      layout(RequestOf(input.Shape(), pass, kernels)) {
  input.Hold(1);
}

void HorizontalPass::MakeRow(std::int32_t y, std::uint8_t* out) {
  std::uint8_t* const row = input.HeldRow(y);
  kernels.repeatEdges(row, input.Shape().RowBytes(), input.Shape().sampleBytes);
  kernels.scaleRow({&layout.Plan(), row, out});
}

}  // namespace vidproc
