// The edge-preserving passes of a single row and the blend with its history. Outer taps are not negative and add up to
// at most the whole: the result is the centre and a weighted mean of the differences from it, a byte as they are.
#include "kernels/kernel_table.h"
#include "kernels/passes/vector_walk.h"
#include "kernels/row_jobs.h"
#include "simd/simd.h"

namespace vidproc::VIDPROC_TARGET {
namespace {

int Magnitude(int value) { return value < 0 ? -value : value; }

/// kept: the square wraps in 16 bits, so that differences of 182 and more test still again.
bool Moves(int previous, int centre) {
  const int change = Magnitude(previous - centre);
  return change >= 16 && change < 182;
}

template <class SampleOf>
int Filter(const DenoiseTaps& taps, int centre, bool moves, const SampleOf& sampleOf) {
  int sum = 64;
  for (int t = 0; t < taps.count; ++t) {
    const int difference = sampleOf(t) - centre;
    const int distance = Magnitude(difference);
    const int weight = moves ? taps.coefficient[t] : distance < 16 ? taps.weights[t][distance] : 0;
    sum += weight * difference;
  }
  return centre + (sum >> 7);
}

int Blend(const HistoryBlend& blend, int value, int history) {
  const int difference = history - value;
  const int distance = Magnitude(difference);
  const int weight = distance < 16 ? blend.weights[distance] : blend.weightFrom16;
  return value + ((weight * difference + 64) >> 7);
}

}  // namespace

void DenoiseRowVertically(const VerticalDenoiseJob& job) {
  for (int b = 0; b < job.bytes; ++b) {
    const int centre = job.centre[b];
    const bool moves = job.previous != nullptr && Moves(job.previous[b], centre);
    job.out[b] = static_cast<std::uint8_t>(Filter(*job.taps, centre, moves, [&](int t) { return job.rows[t][b]; }));
  }
  if (job.previous != nullptr) __builtin_memcpy(job.previous, job.centre, static_cast<std::size_t>(job.bytes));
}

void DenoiseRowHorizontally(const HorizontalDenoiseJob& job) {
  for (int b = 0; b < job.bytes; ++b) {
    const int centre = job.in[b];
    const bool moves = job.previous != nullptr && Moves(job.previous[b], centre);
    const auto sampleOf = [&](int t) { return job.in[b + job.taps->offset[t] * job.step]; };
    int value = Filter(*job.taps, centre, moves, sampleOf);
    if (job.blend != nullptr) value = Blend(*job.blend, value, job.history[b]);
    if (job.history != nullptr) job.history[b] = static_cast<std::uint8_t>(value);
    if (job.out != nullptr) job.out[b] = static_cast<std::uint8_t>(value);
  }
  if (job.previous != nullptr) __builtin_memcpy(job.previous, job.in, static_cast<std::size_t>(job.bytes));
}

}  // namespace vidproc::VIDPROC_TARGET
