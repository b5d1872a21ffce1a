// The noise generator: a linear feedback shift register of 31 bits (x^31 + x^28 + 1, maximal length) that draws the
// patches of the noise tile. In an anonymous namespace, so that every unit has a copy made for its own instruction set.
#pragma once

#include <cstdint>

#include "kernels/noise_field.h"

namespace vidproc {
namespace {

constexpr std::uint32_t kNoiseRegisterMask = 0x7FFFFFFF;

inline std::uint32_t StepNoiseRegister(std::uint32_t state) {
  return (state << 1 & kNoiseRegisterMask) | ((state >> 30 ^ state >> 27) & 1u);
}

/// Draws the patches of a band, one per block: even rows and columns in fours, 0..48, so that all 16 x 16 bytes of a
/// patch lie inside the tile.
inline void DrawNoiseBand(std::uint32_t& state, std::uint16_t* blockPosition, std::uint32_t blocks) {
  for (std::uint32_t i = 0; i < blocks; ++i) {
    state = StepNoiseRegister(state);
    const std::uint32_t row = (state >> 16) % 50 & ~1u;
    const std::uint32_t column = (state & 0xFFFFu) % 52 & ~3u;
    blockPosition[i] = static_cast<std::uint16_t>(row * kNoiseTileSize + column);
  }
}

}  // namespace
}  // namespace vidproc
