// The same-size temporal filter, written plainly per byte.
#pragma once

#include <cstddef>
#include <cstdint>

#include "reference/stream_state.h"

namespace reference {

struct TemporalSettings {
  std::size_t width = 0, height = 0;  ///< the source is packed
  std::size_t outStride = 0;
  int strength = 0, shift = 0;
};

/// One frame. Filtering one packed buffer in place is defined: the neighbour above is already filtered.
void RunTemporal(const TemporalSettings& settings, StreamState& state, const std::uint8_t* source,
                 std::uint8_t* destination);

}  // namespace reference
