// The strip driver: walks the output in strips of rows whose intermediate values stay in the cache, and owns edges,
// order, the short last strip, history, noise and the way to the destination. A kernel supplies the two filtering
// stages.
#pragma once

#include "kernels/passes/horizontal_pass.h"
#include "kernels/passes/put_rows.h"
#include "kernels/passes/transposes.h"
#include "kernels/passes/vertical_pass.h"
#include "kernels/scale_job.h"

namespace vidproc::VIDPROC_TARGET {
namespace {

/// Copies the strip's piece of a transposed plane into memory of its own, or back; used for the short last strip, whose
/// vectors would reach into the next column.
template <class Value>
inline void CopyColumnPieces(const Value* from, std::ptrdiff_t fromStride, Value* to, std::ptrdiff_t toStride,
                             int columns, int rows) {
  for (int c = 0; c < columns; ++c, from += fromStride, to += toStride) {
    __builtin_memcpy(to, from, static_cast<std::size_t>(rows) * sizeof(Value));
  }
}

/// Where a strip's byte columns go: the history itself where there is one (each byte is blended with what it replaces),
/// else the strip's memory.
template <class Strip>
inline StripResult OpenStrip(const ScaleJob& job, int firstRow, int rowCount) {
  StripResult result{job.strip.outColumns, Strip::kRows, nullptr, 0};
  const bool whole = rowCount == Strip::kRows;
  if (job.history != nullptr) {
    if (whole) {
      result.columns = job.history + firstRow;
      result.stride = job.outHeight;
    } else {
      CopyColumnPieces<std::uint8_t>(job.history + firstRow, job.outHeight, result.columns, result.stride,
                                     2 * job.outWidth, rowCount);
    }
  }
  if (job.previousVertical != nullptr) {
    result.previousVertical = job.previousVertical + firstRow;
    result.previousVerticalStride = job.outHeight;
    if (!whole) {
      CopyColumnPieces<std::int16_t>(job.previousVertical + firstRow, job.outHeight, job.strip.previousVerticalPiece,
                                     Strip::kRows, 2 * job.outWidth, rowCount);
      result.previousVertical = job.strip.previousVerticalPiece;
      result.previousVerticalStride = Strip::kRows;
    }
  }
  return result;
}

/// Strips of 16-bit values, exact for every bank.
struct WordStrip {
  static constexpr int kRows = kStripRows;

  static void ToColumns(const StripMemory& strip, int rowBytes) { RowsToColumns(strip, rowBytes); }

  /// The vertical result of these rows becomes what the next frame's horizontal motion test keepsVertical.
  static void KeepVerticalResult(const ScaleJob& job, int firstRow, int rowCount) {
    CopyColumnPieces<std::int16_t>(job.strip.columns + ColumnOffset(0), kRows, job.previousVertical + firstRow,
                                   job.outHeight, 2 * job.inWidth, rowCount);
  }
};

/// A horizontal stage that treats luma and chroma alike.
template <int kTaps, int kShift, class Taps, class Result>
inline HorizontalScale<kTaps, kShift, Taps, Result> ScaleRows(const Taps& taps, const Result& result) {
  return {taps, result, result};
}

template <class Strip = WordStrip, class VerticalStage, class HorizontalStage>
inline void RunStrips(const ScaleJob& job, const VerticalStage& vertical, const HorizontalStage& horizontal) {
  for (int firstRow = 0; firstRow < job.outHeight; firstRow += Strip::kRows) {
    const int rowCount = job.outHeight - firstRow < Strip::kRows ? job.outHeight - firstRow : Strip::kRows;
    vertical(job, firstRow, rowCount);
    Strip::ToColumns(job.strip, 2 * job.inWidth);
    const bool keepsVertical = job.previousVertical != nullptr;
    if (keepsVertical && job.firstFrame) Strip::KeepVerticalResult(job, firstRow, rowCount);
    const StripResult result = OpenStrip<Strip>(job, firstRow, rowCount);
    horizontal(job, result);
    if (keepsVertical) Strip::KeepVerticalResult(job, firstRow, rowCount);
    if (job.history != nullptr && result.columns == job.strip.outColumns) {
      CopyColumnPieces<std::uint8_t>(result.columns, result.stride, job.history + firstRow, job.outHeight,
                                     2 * job.outWidth, rowCount);
    }
    PutRows(job, firstRow, rowCount, [&](std::uint8_t* rows, std::ptrdiff_t stride) {
      ColumnsToRows(result.columns, result.stride, 2 * job.outWidth, rowCount, rows, stride);
    });
  }
}

}  // namespace
}  // namespace vidproc::VIDPROC_TARGET
