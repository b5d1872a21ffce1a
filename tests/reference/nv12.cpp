// An odd width ends in half a group of bytes: a packed row holds its Cb and Y, and its Cr is what follows in memory,
// the next row's first byte; after the last row the sample before stands in.
#include "reference/nv12.h"

namespace reference {

void StageNv12(const Planes<const std::uint8_t>& planes, std::size_t width, std::size_t height, std::uint8_t* packed) {
  for (std::size_t y = 0; y < height; ++y) {
    const std::uint8_t* luma = planes.luma + y * planes.lumaStride;
    const std::uint8_t* chroma = planes.chroma + y / 2 * planes.chromaStride;
    for (std::size_t x = 0; x < width; ++x) {
      *packed++ = chroma[x];
      *packed++ = luma[x];
    }
  }
}

void UnstageNv12(const std::uint8_t* packed, std::size_t width, std::size_t height,
                 const Planes<std::uint8_t>& planes) {
  for (std::size_t y = 0; y < height; ++y) {
    const std::uint8_t* row = packed + y * 2 * width;
    std::uint8_t* luma = planes.luma + y * planes.lumaStride;
    std::uint8_t* chroma = planes.chroma + y / 2 * planes.chromaStride;
    for (std::size_t x = 0; x < width; ++x) {
      chroma[x] = row[2 * x];
      luma[x] = row[2 * x + 1];
    }
    if (width % 2 == 1) chroma[width] = y + 1 < height ? row[2 * width] : row[2 * width - 4];
  }
}

}  // namespace reference
