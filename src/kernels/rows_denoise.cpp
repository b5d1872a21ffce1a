// The edge-preserving passes of a single row, and the blend with its history. Outer taps are not negative and add up to
// at most the whole: results are bytes as they are, and bytes will do at every step.
#include <cstring>

#include "kernels/kernel_table.h"
#include "kernels/passes/byte_adaptive_taps.h"
#include "kernels/row_jobs.h"
#include "simd/simd.h"

namespace vidproc::VIDPROC_TARGET {
namespace {

template <class Run>
void WithMotionTest(const std::uint8_t* previous, const Run& run) {
  previous == nullptr ? run(NoMotionTest{}) : run(RowMotionTest{previous});
}

/// Differences of 16 and more keep a share of the history too.
struct WideBlend {
  U8 table;
  U8 weightFrom16;

  explicit WideBlend(const HistoryBlend& blend)
      : table(LoadRepeated(blend.table)), weightFrom16(SplatU8(blend.weightFrom16)) {}

  U8 Blend(U8 history, U8 value) const {
    const U8 difference = AbsoluteDifference(history, value);
    const U8 isNear = Equal(Min(difference, SplatU8(15)), difference);
    const Halves alpha = Split(Or(LookUpBelow16(table, difference), AndNot(isNear, weightFrom16)));
    const Halves from = Split(value);
    const Halves to = Split(history);
    return Join(Blend(alpha.low, to.low, from.low), Blend(alpha.high, to.high, from.high));
  }

 private:
  static I16 Blend(I16 alpha, I16 history, I16 value) {
    const I16 product = MultiplyLow(alpha, Subtract(history, value));
    return Add(value, ShiftRight<7>(Add(product, SplatI16(64))));
  }
};

struct NoBlend {
  U8 Blend(U8 /*history*/, U8 value) const { return value; }
};

template <class Run>
void WithBlend(const HistoryBlend* blend, const Run& run) {
  if (blend == nullptr) return run(NoBlend{});
  if (blend->weightFrom16 != 0) return run(WideBlend(*blend));
  run(ByteBlend(blend->steps));
}

template <int kOuter, class MotionTest, class HistoryBlender>
void FilterAndBlend(const HorizontalDenoiseJob& job, const ByteTaps<kOuter>& taps, const MotionTest& motionTest,
                    const HistoryBlender& blender) {
  std::ptrdiff_t offsets[kOuter + 1];
  for (int t = 0; t < kOuter; ++t) offsets[t] = job.taps->offset[t] * job.step;
  std::uint8_t* const history = job.history;
  std::uint8_t* const out = job.out;
  const std::uint8_t* const in = job.in;
  const int bytes = job.bytes;
  for (int b = 0; b < bytes; b += kVectorBytes) {
    U8 sample[kOuter + 1];
    for (int t = 0; t < kOuter; ++t) sample[t] = LoadU8(in + b + offsets[t]);
    U8 value = taps.Filter(LoadU8(in + b), sample, motionTest, b);
    if (history != nullptr) {
      value = blender.Blend(LoadU8(history + b), value);
      Store(history + b, value);
    }
    if (out == nullptr) continue;
    if (b + kVectorBytes <= bytes) {
      Store(out + b, value);
    } else {
      std::uint8_t end[kVectorBytes];
      Store(end, value);
      std::memcpy(out + b, end, static_cast<std::size_t>(bytes - b));
    }
  }
}

void FilterVertically(const VerticalDenoiseJob& job) {
  const std::uint8_t* rows[kMaxTaps];
  for (int t = 0; t < kMaxTaps; ++t) rows[t] = t < job.taps->count ? job.rows[t] : job.centre;
  const std::uint8_t* const ahead = job.ahead[0] != nullptr ? job.ahead[0] : job.centre;
  WithRoomForStep(job.out, job.bytes, kVectorBytes, [&](std::uint8_t* out) {
    WithMotionTest(job.previous, [&](const auto& motionTest) {
      WithByteTaps(*job.taps, [&](const auto& taps) {
        FilterRowAdaptively(taps, motionTest, rows, job.centre, ahead, job.bytes, out);
      });
    });
  });
}

void FilterHorizontally(const HorizontalDenoiseJob& job) {
  WithMotionTest(job.previous, [&](const auto& motionTest) {
    WithBlend(job.blend, [&](const auto& blender) {
      WithByteTaps(*job.taps, [&](const auto& taps) { FilterAndBlend(job, taps, motionTest, blender); });
    });
  });
}

}  // namespace

void DenoiseRowVertically(const VerticalDenoiseJob& job) {
  FilterVertically(job);
  if (job.previous != nullptr) std::memcpy(job.previous, job.centre, static_cast<std::size_t>(job.bytes));
}

void DenoiseRowHorizontally(const HorizontalDenoiseJob& job) {
  FilterHorizontally(job);
  if (job.previous != nullptr) std::memcpy(job.previous, job.in, static_cast<std::size_t>(job.bytes));
}

}  // namespace vidproc::VIDPROC_TARGET
