// The vertical pass of a single row.
#include "kernels/kernel_table.h"
#include "kernels/passes/vector_walk.h"
#include "kernels/row_jobs.h"
#include "simd/simd.h"

namespace vidproc::VIDPROC_TARGET {

void FilterRowsVertically(const VerticalRowJob& job) {
  const VerticalTaps& taps = *job.taps;
  for (int b = 0; b < job.bytes; ++b) {
    int sum = 1 << (job.shift - 1);
    for (int t = 0; t < taps.count; ++t) sum += taps.coefficient[t] * job.rows[t][b];
    job.out[b] = static_cast<std::uint8_t>(Clamp(sum >> job.shift, 0, 255));
  }
}

}  // namespace vidproc::VIDPROC_TARGET
