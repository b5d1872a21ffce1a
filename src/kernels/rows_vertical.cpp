// The vertical pass of a single row.
#include <cstring>

#include "kernels/kernel_table.h"
#include "kernels/passes/byte_vertical_pass.h"
#include "kernels/passes/vector_walk.h"
#include "kernels/row_jobs.h"
#include "simd/simd.h"

namespace vidproc::VIDPROC_TARGET {
namespace {

/// Sums in 32 bits: one vector of bytes.
template <int kShift>
U8 FilterVector(const VerticalRowJob& job, std::ptrdiff_t b) {
  const VerticalTaps& taps = *job.taps;
  WideSums sums = SplatWideSums(1 << (kShift - 1));
  for (int t = 0; t < taps.count; t += 2) {
    const bool isPair = t + 1 < taps.count;
    const I16 pair = SplatWordPair(taps.coefficient[t], isPair ? taps.coefficient[t + 1] : 0);
    sums = AddProducts(sums, LoadU8(job.rows[t] + b), LoadU8(job.rows[isPair ? t + 1 : t] + b), pair);
  }
  return JoinShifted<kShift>(sums);
}

template <int kShift>
void FilterInWords(const VerticalRowJob& job) {
  WithRoomForStep(job.out, job.bytes, kVectorBytes, [&](std::uint8_t* out) {
    WalkSteps(job.bytes, kVectorBytes, [&](std::ptrdiff_t b) { Store(out + b, FilterVector<kShift>(job, b)); });
  });
}

template <int kTaps, int kShift>
void FilterTapsInBytes(const VerticalRowJob& job) {
  const auto ahead = [&](int i) { return job.ahead[i] != nullptr ? job.ahead[i] : job.rows[0]; };
  WithRoomForStep(job.out, job.bytes, 2 * kVectorBytes, [&](std::uint8_t* out) {
    FilterRowBytes<kTaps, kShift>(job.rows, job.taps->coefficient, job.bytes, {ahead(0), ahead(1)}, PlaneResult{out});
  });
}

/// Two equal taps, as the automatic filter has them at 2:1: (64 a + 64 b + 64) >> 7 is the rounded mean.
void AverageRows(const VerticalRowJob& job) {
  constexpr int kStep = 2 * kVectorBytes;
  // Copies, because bytes that are stored might be those of the job.
  const std::uint8_t* const first = job.rows[0];
  const std::uint8_t* const second = job.rows[1];
  const int bytes = job.bytes;
  WithRoomForStep(job.out, bytes, kStep, [=](std::uint8_t* out) {
    WalkSteps(bytes, kStep, [=](std::ptrdiff_t b) {
      PlaneResult{out}.Put(b, Average(LoadU8(first + b), LoadU8(second + b)),
                           Average(LoadU8(first + b + kVectorBytes), LoadU8(second + b + kVectorBytes)));
    });
  });
}

template <int kShift>
void FilterInBytes(const VerticalRowJob& job) {
  switch (job.taps->count) {
    case 1:
      return FilterTapsInBytes<1, kShift>(job);
    case 2:
      return FilterTapsInBytes<2, kShift>(job);
    case 3:
      return FilterTapsInBytes<3, kShift>(job);
    case 4:
      return FilterTapsInBytes<4, kShift>(job);
    case 5:
    case 6:
      return FilterTapsInBytes<6, kShift>(job);
    default:
      return FilterTapsInBytes<8, kShift>(job);
  }
}

template <int kShift>
void Filter(const VerticalRowJob& job) {
  constexpr int kHalf = 1 << (kShift - 1);
  const VerticalTaps& taps = *job.taps;
  if (taps.count == 1 && taps.coefficient[0] == 1 << kShift) {
    std::memcpy(job.out, job.rows[0], static_cast<std::size_t>(job.bytes));
  } else if (taps.count == 2 && taps.coefficient[0] == kHalf && taps.coefficient[1] == kHalf) {
    AverageRows(job);
  } else if (taps.inBytes) {
    FilterInBytes<kShift>(job);
  } else {
    FilterInWords<kShift>(job);
  }
}

}  // namespace

void FilterRowsVertically(const VerticalRowJob& job) { job.shift == 7 ? Filter<7>(job) : Filter<6>(job); }

}  // namespace vidproc::VIDPROC_TARGET
