// Where an output sample of an axis lies in the source.
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

PhasePosition LocatePhase(std::int64_t output, const Ratio& ratio);

}  // namespace vidproc
