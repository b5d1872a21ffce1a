// Where an output sample lies in the source when pictures are aligned by their centres.
#pragma once

#include <cstdint>

#include "kernels/scale_job.h"
#include "plan/phase_position.h"

namespace vidproc {

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

/// The ratio is that of the luma sizes, whatever the component; positions round to the nearest sixteenth.
RowPosition LocateCentred(std::int64_t output, const Ratio& ratio, const SampleGrid& in, const SampleGrid& out);

}  // namespace vidproc
