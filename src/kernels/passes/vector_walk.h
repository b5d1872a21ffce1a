// Keeping inside a frame: rows beyond it repeat its first or last one, and the last vector of a row ends with the row.
#pragma once

namespace vidproc::VIDPROC_TARGET {
namespace {

constexpr int Clamp(int value, int low, int high) { return value < low ? low : value > high ? high : value; }

/// Where the step of a walk that has come to `start` begins: the last one overlaps the one before, so as to end with
/// the row. Rows shorter than a step are overrun.
constexpr int VectorStart(int start, int rowBytes, int step) {
  const int last = rowBytes - step;
  return start <= last || last < 0 ? start : last;
}

}  // namespace
}  // namespace vidproc::VIDPROC_TARGET
