// Frames as the pipeline meets them: format and size, planes in memory, and how the format lays them out.
#pragma once

#include <cstddef>
#include <cstdint>

namespace vidproc {

// The values are those of the public enumerations.
enum class PixelFormat : std::uint8_t { kUyvy, kYuyv, kNv12, kI420, kI422 };
enum class ChromaSiting : std::uint8_t { kLeft, kCentre };

/// 2 x 1 to 16384 x 16384; every plane in a tight layout below 2^31 bytes.
struct FrameShape {
  PixelFormat format;
  ChromaSiting siting;
  std::int32_t width;
  std::int32_t height;

  bool operator==(const FrameShape&) const = default;
};

/// Planes of a frame in the order of the format: one for packed frames, luma and pairs for NV12, luma, Cb, Cr for the
/// planar ones. Each starts with its top row; strides are negative in bottom-up frames. No alignment; rows may be any
/// distance apart that holds them.
struct InputPlanes {
  const std::uint8_t* plane[3];
  std::ptrdiff_t stride[3];
};
struct OutputPlanes {
  std::uint8_t* plane[3];
  std::ptrdiff_t stride[3];
};

inline bool IsPacked(PixelFormat format) { return format == PixelFormat::kUyvy || format == PixelFormat::kYuyv; }
inline bool HasChromaPlanes(PixelFormat format) { return format == PixelFormat::kI420 || format == PixelFormat::kI422; }
inline bool HalvesChromaRows(PixelFormat format) {
  return format == PixelFormat::kNv12 || format == PixelFormat::kI420;
}
inline std::int32_t ChromaColumns(const FrameShape& shape) { return shape.width / 2 + shape.width % 2; }
inline std::int32_t ChromaRows(const FrameShape& shape) {
  return HalvesChromaRows(shape.format) ? shape.height / 2 + shape.height % 2 : shape.height;
}

}  // namespace vidproc
