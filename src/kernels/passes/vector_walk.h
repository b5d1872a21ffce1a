// Keeping inside a frame: rows beyond it repeat its first or last one, and the last vector of a row ends with the row.
#pragma once

#include <cstddef>
#include <cstdint>

#include "kernels/scale_job.h"

namespace vidproc::VIDPROC_TARGET {
namespace {

constexpr int Clamp(int value, int low, int high) { return value < low ? low : value > high ? high : value; }

/// Where the step of a walk that has come to `start` begins: the last one overlaps the one before, so as to end with
/// the row. Rows shorter than a step are overrun.
constexpr int VectorStart(int start, int rowBytes, int step) {
  const int last = rowBytes - step;
  return start <= last || last < 0 ? start : last;
}

/// Calls filter with where it may write a row, a step at a time: rows shorter than a step are made elsewhere.
template <class Filter>
inline void WithRoomForStep(std::uint8_t* row, int bytes, int step, const Filter& filter) {
  if (bytes >= step) return filter(row);
  std::uint8_t shortRow[kMinRowBytes];
  filter(shortRow);
  __builtin_memcpy(row, shortRow, static_cast<std::size_t>(bytes));
}

}  // namespace
}  // namespace vidproc::VIDPROC_TARGET
