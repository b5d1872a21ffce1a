// 4:2:0 frames as their caller hands them over: a luma plane, and a plane of interleaved Cb, Cr pairs of which one row
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

/// Whether the planes exist, have rows of their own, and fit stagingBytes as a packed 2vuy frame.
bool CanBeStaged(const Frame420& planes, std::uint64_t stagingBytes);

/// Writes the planes as a packed 2vuy frame, both luma rows of a pair with the same chroma.
void StageFrame(const Frame420& planes, std::uint8_t* frame);

/// Writes a packed 2vuy frame into the planes. kept: of the two rows 2j and 2j + 1, which both write chroma row j, the
/// second stays.
void UnstageFrame(const std::uint8_t* frame, const Frame420& planes);

}  // namespace vidproc
