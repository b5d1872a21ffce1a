// The strip driver: walks the output in strips of rows whose intermediate values stay in the cache, and owns edges,
// order, the short last strip, history, noise and the way to the destination. A kernel supplies the two filtering
// stages.
#pragma once

#include <cstring>

#include "kernels/passes/horizontal_pass.h"
#include "kernels/passes/put_rows.h"
#include "kernels/passes/transposes.h"
#include "kernels/passes/vertical_pass.h"
#include "kernels/scale_job.h"

namespace vidproc::VIDPROC_TARGET {
namespace {

/// Copies a strip's rows of every column from one transposed plane to another. The short last strip works on such a
/// copy, because its vectors would reach into the next column.
template <class Value>
inline void CopyColumnPieces(const Value* from, std::ptrdiff_t fromStride, Value* to, std::ptrdiff_t toStride,
                             int columns, int rows) {
  for (int c = 0; c < columns; ++c, from += fromStride, to += toStride) {
    std::memcpy(to, from, static_cast<std::size_t>(rows) * sizeof(Value));
  }
}

/// Where a strip's byte columns go: the history itself where there is one (each byte is blended with what it replaces),
/// else the strip's memory.
template <class Columns>
inline StripResult PlaceResult(const ScaleJob& job, int firstRow, int rowCount) {
  StripResult result{job.strip.outColumns, Columns::kRows, nullptr, 0};
  const bool whole = rowCount == Columns::kRows;
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
                                     Columns::kRows, 2 * job.outWidth, rowCount);
      result.previousVertical = job.strip.previousVerticalPiece;
      result.previousVerticalStride = Columns::kRows;
    }
  }
  return result;
}

/// How a strip is transposed and kept: here as columns of 16-bit values, which hold the vertical result of every bank.
struct WordColumns {
  static constexpr int kRows = kStripRows;

  static void ToColumns(const StripMemory& strip, int rowBytes) { RowsToColumns(strip, rowBytes); }

  /// Keeps the vertical result of these rows for the motion test of the next frame.
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

template <class Columns = WordColumns, class VerticalStage, class HorizontalStage>
inline void RunStrips(const ScaleJob& job, const VerticalStage& vertical, const HorizontalStage& horizontal) {
  for (int firstRow = 0; firstRow < job.outHeight; firstRow += Columns::kRows) {
    const int rowCount = job.outHeight - firstRow < Columns::kRows ? job.outHeight - firstRow : Columns::kRows;
    vertical(job, firstRow, rowCount);
    Columns::ToColumns(job.strip, 2 * job.inWidth);
    const bool keepsVertical = job.previousVertical != nullptr;
    if (keepsVertical && job.firstFrame) Columns::KeepVerticalResult(job, firstRow, rowCount);
    const StripResult result = PlaceResult<Columns>(job, firstRow, rowCount);
    horizontal(job, result);
    if (keepsVertical) Columns::KeepVerticalResult(job, firstRow, rowCount);
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
