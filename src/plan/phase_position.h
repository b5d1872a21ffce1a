// Where the output samples of an axis lie in the source.
#pragma once

#include <cstdint>

#include "kernels/scale_job.h"

namespace vidproc {

/// Whether a set of phases, a bit each, has one.
inline bool HasPhase(std::uint32_t phases, int phase) { return (phases >> phase & 1) != 0; }

/// Output to input size of an axis, reduced.
struct Ratio {
  std::int32_t up;
  std::int32_t down;
  bool operator==(const Ratio&) const = default;
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

/// Where a component's samples lie along an axis of the picture, which counts in luma samples: sample i at
/// spacing * i + firstInHalves / 2.
struct SampleGrid {
  std::int32_t spacing;
  std::int32_t firstInHalves;
  bool operator==(const SampleGrid&) const = default;
};
inline constexpr SampleGrid kLumaGrid{1, 1};           ///< and chroma rows of 4:2:2
inline constexpr SampleGrid kLeftChromaGrid{2, 1};     ///< columns beside the first luma sample of a pair
inline constexpr SampleGrid kCentredChromaGrid{2, 2};  ///< columns between the two; rows of 4:2:0

/// Aligned by the pictures' centres, to the nearest sixteenth. The ratio is that of the luma sizes, whatever the
/// component.
PositionRule AlignCentres(const Ratio& ratio, const SampleGrid& in, const SampleGrid& out);

/// Whether the ratio is one, and keeps the centre tap of every output of a corner-aligned axis inside the source.
bool StaysInside(const Ratio& ratio, std::int64_t outSize, std::int64_t inSize);

}  // namespace vidproc
