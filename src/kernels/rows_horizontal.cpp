// The horizontal pass of a single row.
#include "kernels/kernel_table.h"
#include "kernels/passes/vector_walk.h"
#include "kernels/row_jobs.h"
#include "simd/simd.h"

namespace vidproc::VIDPROC_TARGET {

void ScaleRow(const HorizontalRowJob& job) {
  const HorizontalRowPlan& plan = *job.plan;
  std::uint8_t* out = job.out;
  for (int k = 0; k < plan.outputs; ++k) {
    const RowPosition& position = plan.positions[k];
    const std::int16_t* coefficients = plan.coefficients + position.phase * kMaxTaps;
    for (int component = 0; component < plan.step; ++component) {
      const std::uint8_t* samples = job.in + position.source * plan.step + component;
      int sum = 1 << (plan.shift - 1);
      for (int t = 0; t < plan.taps; ++t) sum += coefficients[t] * samples[t * plan.step];
      *out++ = static_cast<std::uint8_t>(Clamp(sum >> plan.shift, 0, 255));
    }
  }
}

void RepeatRowEdges(std::uint8_t* row, std::int32_t bytes, std::int32_t step) {
  for (int i = 0; i < kRowEdge; ++i) {
    row[-1 - i] = row[step - 1 - i % step];
    row[bytes + i] = row[bytes - step + i % step];
  }
}

}  // namespace vidproc::VIDPROC_TARGET
