// A 4:2:0 frame pair as its caller hands it over: luma planes, and planes of interleaved Cb, Cr pairs of which one row
// serves two luma rows.
#pragma once

#include <cstdint>

namespace vidproc {

/// Width and height in pixels of the luma plane, strides in bytes.
struct Frame420 {
  std::uint8_t* luma;
  std::uint8_t* chroma;
  std::uint32_t width;
  std::uint32_t height;
  std::uint32_t lumaStride;
  std::uint32_t chromaStride;
};

struct FramePair420 {
  Frame420 source;
  Frame420 destination;
};

}  // namespace vidproc
