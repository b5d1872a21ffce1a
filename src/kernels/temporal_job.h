// What one run of the same-size temporal filter works on: three packed blocks, walked as `segments` segments of
// `segmentBytes` bytes each.
#pragma once

#include <cstdint>

#include "kernels/form.h"

namespace vidproc {

struct TemporalJob {
  const std::uint8_t* source;
  std::uint8_t* reference;    ///< the kernel refreshes it: ends as a copy of the destination
  std::uint8_t* destination;  ///< the source itself, or apart from it
  std::int32_t segments;
  std::int32_t segmentBytes;
  Form form;
  std::uint8_t strength;  ///< 0..127, larger values by the same rule
  std::uint8_t shift;     ///< 0..8, larger values by the same rule
};

}  // namespace vidproc
