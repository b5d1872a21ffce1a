// Where the output samples of an axis lie in the source.
#pragma once

#include <cstdint>

namespace vidproc {

/// Output to input size of an axis, reduced.
struct Ratio {
  std::int32_t up;
  std::int32_t down;
  bool operator==(const Ratio&) const = default;
};

struct PhasePosition {
  std::int32_t source;  ///< sample under the centre tap
  std::int32_t phase;   ///< 0..15, sixteenths after it
};

/// Output k lies at (step * k + start) / unit source samples, rounded down to a sixteenth. step and unit are positive,
/// and step times the number of outputs stays inside 62 bits.
struct PositionRule {
  std::int64_t step;
  std::int64_t start;
  std::int64_t unit;

  PhasePosition Locate(std::int64_t output) const;
  bool operator==(const PositionRule&) const = default;
};

/// Aligned by their corners: the first samples coincide, and output k lies at k * down / up.
inline PositionRule AlignCorners(const Ratio& ratio) { return {ratio.down, 0, ratio.up}; }

/// The position of an output aligned by the corners.
inline PhasePosition LocatePhase(std::int64_t output, const Ratio& ratio) { return AlignCorners(ratio).Locate(output); }

/// Whether the ratio is one, and keeps the centre tap of every output of a corner-aligned axis inside the source.
bool StaysInside(const Ratio& ratio, std::int64_t outSize, std::int64_t inSize);

}  // namespace vidproc
