// Frames as pieces of memory: how far they reach, whether two of them overlap, and their rows copied.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "vidproc/video_processor.h"

namespace vidproc {

/// Frames with a side as long as this, in pixels, are never processed: rows count in 32-bit numbers.
inline constexpr std::uint32_t kMaxFrameSide = 1u << 30;

/// Bytes from the first byte of a frame to the last byte of its last row.
inline std::uint64_t FrameExtent(std::uint32_t width, std::uint32_t height, std::uint32_t stride) {
  return std::uint64_t{height - 1} * stride + std::uint64_t{2} * width;
}

inline std::uint64_t SourceExtent(const VideoProcessor& p) { return FrameExtent(p.inWidth, p.inHeight, p.inStride); }
inline std::uint64_t DestinationExtent(const VideoProcessor& p) {
  return FrameExtent(p.outWidth, p.outHeight, p.outStride);
}

inline std::uint64_t PackedInputRow(const VideoProcessor& p) { return std::uint64_t{2} * p.inWidth; }
inline std::uint64_t PackedOutputRow(const VideoProcessor& p) { return std::uint64_t{2} * p.outWidth; }
inline std::uint64_t PackedOutputBytes(const VideoProcessor& p) { return PackedOutputRow(p) * p.outHeight; }

inline bool HasPackedOutput(const VideoProcessor& p) { return p.outStride == PackedOutputRow(p); }

/// Where the temporal filter, which works on packed frames, leaves its result.
inline std::uint8_t* TemporalDestination(const VideoProcessor& p) {
  return HasPackedOutput(p) ? p.dstFrame : reinterpret_cast<std::uint8_t*>(p.scratchA);
}

/// Rows of 2vuy in memory.
struct Rows {
  const std::uint8_t* start;
  std::ptrdiff_t stride;
};

inline bool Overlap(const std::uint8_t* a, std::uint64_t aBytes, const std::uint8_t* b, std::uint64_t bBytes) {
  return a < b + bBytes && b < a + aBytes;
}

inline void CopyRows(const std::uint8_t* from, std::uint64_t fromStride, std::uint8_t* to, std::uint64_t toStride,
                     std::uint64_t rowBytes, std::uint32_t rows) {
  for (std::uint32_t r = 0; r < rows; ++r) {
    std::memmove(to + r * toStride, from + r * fromStride, static_cast<std::size_t>(rowBytes));
  }
}

}  // namespace vidproc
