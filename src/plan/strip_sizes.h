// How much memory a strip takes, by the bytes of a packed row of its source or of its output.
#pragma once

#include <cstdint>

#include "kernels/scale_job.h"

namespace vidproc {

/// Rows of 16-bit values; as many bytes are twice as many rows.
inline constexpr std::uint64_t kStripValueRows = kMaxStripRows / 2;

/// StripMemory::rowPitch.
constexpr std::uint64_t StripRowPitch(std::uint64_t inRowBytes) { return inRowBytes + kRowSlack / 2; }

/// Values of StripMemory::rows.
constexpr std::uint64_t StripRowValues(std::uint64_t inRowBytes) { return kStripValueRows * StripRowPitch(inRowBytes); }

/// Values of StripMemory::columns.
constexpr std::uint64_t StripColumnValues(std::uint64_t inRowBytes) {
  return kStripValueRows * (inRowBytes + 2 * kEdgeColumns + kRowSlack);
}

/// Bytes of StripMemory::outColumns and outRows, values of previousVerticalPiece.
constexpr std::uint64_t StripOutputSize(std::uint64_t outRowBytes) { return kMaxStripRows * (outRowBytes + kRowSlack); }

/// Bytes of DeblockJob::rowsAbove.
constexpr std::uint64_t RowsAboveBytes(std::uint64_t inRowBytes) { return 3 * (inRowBytes + kRowSlack); }

}  // namespace vidproc
