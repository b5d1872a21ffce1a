// Planes of a frame: how many there are, their rows, and the bytes of a row.
#pragma once

#include <cstddef>
#include <cstdint>

#include "vidproc/vidproc.h"

namespace vidproc::api {

inline constexpr int kMaxPlanes = 3;
inline constexpr std::int32_t kMinWidth = 2;
inline constexpr std::int32_t kMinHeight = 1;
inline constexpr std::int32_t kMaxSide = 16384;
/// No plane reaches as far as this, whatever its stride.
inline constexpr std::size_t kPlaneBytesLimit = std::size_t{1} << 31;

struct PlaneLayout {
  std::size_t rows;
  std::size_t rowBytes;       ///< that a stride must hold
  std::size_t wholeRowBytes;  ///< with the whole last pair of an odd packed row; else the same

  /// Bytes of a row that are touched in a plane of this stride, whatever its sign.
  std::size_t TouchedRowBytes(std::size_t stride) const { return stride >= wholeRowBytes ? wholeRowBytes : rowBytes; }
};

struct FrameLayout {
  int planes;
  PlaneLayout plane[kMaxPlanes];
};

/// Whether the info's format and sizes are such as this interface takes.
bool IsValid(const vidproc_frame_info& info);

/// `info` is valid.
FrameLayout LayoutOf(const vidproc_frame_info& info);

/// Bytes of planes that follow one another without padding, their packed rows ending with whole pairs.
std::size_t TightBytes(const FrameLayout& layout);

}  // namespace vidproc::api
