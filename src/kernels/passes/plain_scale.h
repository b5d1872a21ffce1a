// The scalers whose taps weigh the same everywhere: row by row in bytes where the plan has found that exact, else in
// strips of 16-bit values.
#pragma once

#include <cstring>

#include "compiler/compiler.h"
#include "kernels/kernel_table.h"
#include "kernels/kernel_traits.h"
#include "kernels/passes/byte_row_scaler.h"
#include "kernels/passes/byte_vertical_pass.h"
#include "kernels/passes/put_rows.h"
#include "kernels/passes/strip_driver.h"
#include "kernels/row_jobs.h"

namespace vidproc::VIDPROC_TARGET {
namespace {

/// The vertical result of output row `r`, from a 2vuy frame or from the planes that one would be interleaved from.
template <const KernelTraits& kTraits>
inline void FilterSourceRows(const ScaleJob& job, int r, const SplitRow2vuy& out) {
  constexpr int kShift = kTraits.precisionBits;
  const ByteVerticalPass<kTraits.verticalTaps> vertical{job.rowPositions, job.verticalBank, job.inHeight,
                                                        job.outHeight};
  if (job.planes == nullptr) {
    const auto rowAt = [&job](int row) { return job.source + row * job.sourceStride; };
    vertical.template FilterRow<kShift>(r, rowAt, 2 * job.inWidth, SplitResult{out});
  } else {
    const SourcePlanes& planes = *job.planes;
    const auto lumaAt = [&planes](int row) { return planes.luma + row * planes.lumaStride; };
    const auto chromaAt = [&planes](int row) { return planes.chroma + row / 2 * planes.chromaStride; };
    vertical.template FilterRow<kShift>(r, lumaAt, job.inWidth, PlaneResult{out.luma});
    vertical.template FilterRow<kShift>(r, chromaAt, job.inWidth, PlaneResult{out.chroma});
  }
  // kept: beyond its ends a row of luma repeats two samples in turn, as one of Cb Cr pairs does.
  RepeatRowEdges(out.luma, job.inWidth, 2);
  RepeatRowEdges(out.chroma, job.inWidth, 2);
}

/// 2 * kVectorBytes bytes of 2vuy from two vectors of luma and two of chroma.
template <class LumaResult, class LumaWalk, class ChromaWalk>
VIDPROC_ALWAYS_INLINE void StorePixels(const LumaResult& result, LumaWalk& luma, ChromaWalk& chroma,
                                       std::uint8_t* out) {
  const I16 luma0 = result.Apply(luma.Next());
  const I16 luma1 = result.Apply(luma.Next());
  const I16 chroma0 = chroma.Next();
  const I16 chroma1 = chroma.Next();
  const TwoVectors pixels = JoinInterleaved(chroma0, chroma1, luma0, luma1);
  Store(out, pixels.first);
  Store(out + kVectorBytes, pixels.second);
}

/// A row of `width` pixels.
template <class LumaResult, class LumaWalk, class ChromaWalk>
inline void StoreRow(const LumaResult& lumaResult, LumaWalk luma, ChromaWalk chroma, int width, std::uint8_t* out) {
  // A copy, which no store of bytes can change, stays in registers.
  const LumaResult result = lumaResult;
  int x = 0;
  for (; x + kVectorBytes <= width; x += kVectorBytes) StorePixels(result, luma, chroma, out + 2 * x);
  if (x == width) return;
  std::uint8_t tail[2 * kVectorBytes];
  StorePixels(result, luma, chroma, tail);
  std::memcpy(out + 2 * x, tail, 2 * static_cast<std::size_t>(width - x));
}

/// Scales a frame row by row in bytes.
template <const KernelTraits& kTraits, class LumaResult>
inline void RunRows(const ScaleJob& job, const LumaResult& lumaResult) {
  constexpr int kShift = kTraits.precisionBits;
  // The two rows of the vertical result, each with its edges and with room to overshoot.
  auto* const memory = reinterpret_cast<std::uint8_t*>(job.strip.rows);
  const SplitRow2vuy split{memory + kRowEdge, memory + 4 * kRowEdge + kRowSlack + job.inWidth};
  const ByteRowPlan& plan = *job.byteRowPlan;
  const auto scaleRow = [&](std::uint8_t* row, std::ptrdiff_t /*stride*/) {
    WithGridWalk<kTraits.horizontalTaps / 2>(
        plan.tapPairs,
        [&](auto kind) {
          using LumaWalk = typename decltype(kind)::template Walk<kShift, 1>;
          using ChromaWalk = typename decltype(kind)::template Walk<kShift, 2>;
          StoreRow(lumaResult, LumaWalk(plan.luma, split.luma), ChromaWalk(plan.chroma, split.chroma), job.outWidth,
                   row);
        },
        plan.luma, plan.chroma);
  };
  for (int r = 0; r < job.outHeight; ++r) {
    FilterSourceRows<kTraits>(job, r, split);
    PutRows(job, r, 1, scaleRow);
  }
}

/// Luma goes through a policy of its own.
template <const KernelTraits& kTraits, class LumaResult>
inline void ScalePlainly(const ScaleJob& job, const LumaResult& lumaResult) {
  constexpr int kShift = kTraits.precisionBits;
  if constexpr (kHasByteShuffle) {
    if (job.form == Form::kProven) return RunRows<kTraits>(job, lumaResult);
  }
  RunStrips(job, VerticalScale<kTraits.verticalTaps, kShift, PlainTaps>{},
            HorizontalScale<kTraits.horizontalTaps, kShift, PlainTaps, LumaResult, ClampResult>{{}, lumaResult, {}});
}

}  // namespace
}  // namespace vidproc::VIDPROC_TARGET
