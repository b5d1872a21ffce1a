// Deblocking of the 8 x 8 grid, written plainly per sample.
#pragma once

#include <cstdint>

namespace reference {

struct DeblockSettings {
  int width = 0, height = 0;
  int horizontalUp = 1, horizontalDown = 1;
  int level = 0;
  bool testPattern = true;  ///< paint a checkerboard over the picture first
  std::int16_t horizontal[8] = {}, vertical[8] = {};
};

/// Replaces a packed frame by its deblocked form.
void Deblock(const DeblockSettings& settings, std::uint8_t* frame);

}  // namespace reference
