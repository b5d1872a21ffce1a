// A painted picture as its pixels, and parts of it.
#pragma once

#include <cstddef>
#include <cstdint>

namespace vidproc::scene {

struct Area {
  int left, top, right, bottom;  ///< right and bottom lie outside
};

/// 32 bits a pixel: unused, red, green, blue from the highest.
struct RgbPicture {
  const std::uint8_t* bytes;
  std::ptrdiff_t rowBytes;
  const std::uint32_t* Row(int y) const { return reinterpret_cast<const std::uint32_t*>(bytes + y * rowBytes); }
};

}  // namespace vidproc::scene
