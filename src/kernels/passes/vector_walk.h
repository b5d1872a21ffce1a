// Staying inside a frame: rows beyond it repeat its first or last one, and the last vector of a row ends with the row.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "compiler/compiler.h"
#include "kernels/scale_job.h"

namespace vidproc::VIDPROC_TARGET {
namespace {

constexpr int Clamp(int value, int low, int high) { return value < low ? low : value > high ? high : value; }

/// Calls filter(b) with the first byte of every step along a row. The last step moves back to end with the row, so that
/// some bytes are worked on twice; a row shorter than a step is read and written past its end.
template <class Filter>
VIDPROC_ALWAYS_INLINE void WalkSteps(int rowBytes, int step, const Filter& filter) {
  int b = 0;
  for (; b <= rowBytes - step; b += step) filter(b);
  if (b < rowBytes) filter(rowBytes < step ? b : rowBytes - step);
}

/// Calls filter with where it may write a row, a step at a time: rows shorter than a step are made elsewhere.
template <class Filter>
inline void WithRoomForStep(std::uint8_t* row, int bytes, int step, const Filter& filter) {
  if (bytes >= step) return filter(row);
  std::uint8_t shortRow[kMinRowBytes];
  filter(shortRow);
  std::memcpy(row, shortRow, static_cast<std::size_t>(bytes));
}

}  // namespace
}  // namespace vidproc::VIDPROC_TARGET
