// Transposes of a strip: 16-bit rows to columns on the way into the horizontal pass, byte columns to rows on the way
// out.
#pragma once

#include <cstring>

#include "kernels/scale_job.h"
#include "simd/simd.h"

namespace vidproc::VIDPROC_TARGET {
namespace {

/// Rows of a strip of 16-bit values: one column is whole vectors, and whole 16-byte pieces of the byte result.
constexpr int kStripRows = kLanes > 16 ? kLanes : 16;
static_assert(kStripRows <= kMaxStripRows / 2);
constexpr int kColumnVectors = kStripRows / kLanes;

/// Column `byteColumn` of a source row within the strip's columns; columns lie kStripRows values apart.
inline std::ptrdiff_t ColumnOffset(std::ptrdiff_t byteColumn) { return (kEdgeColumns + byteColumn) * kStripRows; }

/// strip.rows to strip.columns, for the bytes of a source row. The first and the last group of four columns (Cb Y Cr Y)
/// are repeated outward. kept: so luma beyond an edge alternates between the two samples of the edge's pixel pair.
inline void RowsToColumns(const StripMemory& strip, int rowBytes) {
  for (int c = 0; c < rowBytes; c += 8) {
    for (int v = 0; v < kColumnVectors; ++v) {
      I16 block[8];
      for (int i = 0; i < 8; ++i) {
        block[i] = LoadTilesI16(strip.rows + (v * kLanes + i) * strip.rowPitch + c, 8 * strip.rowPitch);
      }
      TransposeTiles(block);
      for (int i = 0; i < 8; ++i) Store(strip.columns + ColumnOffset(c + i) + v * kLanes, block[i]);
    }
  }
  const auto copyColumn = [&strip](int from, int to) {
    for (int v = 0; v < kColumnVectors; ++v) {
      Store(strip.columns + ColumnOffset(to) + v * kLanes, LoadI16(strip.columns + ColumnOffset(from) + v * kLanes));
    }
  };
  for (int i = 0; i < kEdgeColumns; ++i) {
    copyColumn(i % 4, i - kEdgeColumns);
    copyColumn(rowBytes - 4 + i % 4, rowBytes + i);
  }
}

/// Byte columns, `columnStride` bytes apart, to `rowCount` rows of `rowBytes` bytes.
inline void ColumnsToRows(const std::uint8_t* columns, std::ptrdiff_t columnStride, int rowBytes, int rowCount,
                          std::uint8_t* rows, std::ptrdiff_t rowStride) {
  for (int j = 0; j < rowBytes; j += kVectorBytes) {
    const int valid = rowBytes - j < kVectorBytes ? rowBytes - j : kVectorBytes;
    for (int top = 0; top < rowCount; top += 16) {
      const std::uint8_t* from = columns + j * columnStride + top;
      std::ptrdiff_t stride = columnStride;
      std::uint8_t gathered[kVectorBytes * 16];
      if (valid < kVectorBytes) {
        for (int i = 0; i < kVectorBytes; ++i) {
          std::memcpy(gathered + 16 * i, from + (i < valid ? i : valid - 1) * columnStride, 16);
        }
        from = gathered;
        stride = 16;
      }
      U8 block[16];
      for (int i = 0; i < 16; ++i) block[i] = LoadTilesU8(from + i * stride, 16 * stride);
      TransposeTiles(block);
      const int rowsHere = rowCount - top < 16 ? rowCount - top : 16;
      std::uint8_t* to = rows + top * rowStride + j;
      for (int i = 0; i < rowsHere; ++i, to += rowStride) {
        if (valid == kVectorBytes) {
          Store(to, block[i]);
        } else {
          std::uint8_t tail[kVectorBytes];
          Store(tail, block[i]);
          std::memcpy(to, tail, static_cast<std::size_t>(valid));
        }
      }
    }
  }
}

}  // namespace
}  // namespace vidproc::VIDPROC_TARGET
