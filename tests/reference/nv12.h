// 4:2:0 frames (a luma plane, a plane of Cb Cr pairs with one row for two luma rows) to packed 2vuy and back, byte by
// byte.
#pragma once

#include <cstddef>
#include <cstdint>

namespace reference {

template <typename Byte>
struct Planes {
  Byte* luma = nullptr;
  Byte* chroma = nullptr;
  std::size_t lumaStride = 0;
  std::size_t chromaStride = 0;
};

void StageNv12(const Planes<const std::uint8_t>& planes, std::size_t width, std::size_t height, std::uint8_t* packed);

/// Both rows of a pair write its chroma row, the odd one last.
void UnstageNv12(const std::uint8_t* packed, std::size_t width, std::size_t height, const Planes<std::uint8_t>& planes);

}  // namespace reference
