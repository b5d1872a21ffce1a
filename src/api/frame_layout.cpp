#include "api/frame_layout.h"

namespace vidproc::api {
namespace {

bool IsBetween(std::int32_t value, std::int32_t low, std::int32_t high) { return low <= value && value <= high; }

vidproc_status CheckBlock(const void* frame, const vidproc_frame_info* info, const void* memory, std::size_t bytes) {
  if (frame == nullptr || info == nullptr || memory == nullptr || !IsValid(*info)) {
    return VIDPROC_ERROR_INVALID_ARGUMENT;
  }
  return bytes < TightBytes(LayoutOf(*info)) ? VIDPROC_ERROR_BUFFER_TOO_SMALL : VIDPROC_OK;
}

template <typename Frame, typename Byte>
void MapPlanes(Frame& frame, const vidproc_frame_info& info, Byte* memory) {
  frame = {info.format, info.width, info.height, {}, {}, {}};
  const FrameLayout layout = LayoutOf(info);
  for (int p = 0; p < layout.planes; ++p) {
    const PlaneLayout& plane = layout.plane[p];
    frame.plane[p] = memory;
    frame.stride[p] = static_cast<std::ptrdiff_t>(plane.wholeRowBytes);
    frame.bytes[p] = plane.rows * plane.wholeRowBytes;
    memory += frame.bytes[p];
  }
}

}  // namespace

bool IsValid(const vidproc_frame_info& info) {
  return IsBetween(info.format, VIDPROC_FORMAT_UYVY, VIDPROC_FORMAT_I422) &&
         IsBetween(info.width, kMinWidth, kMaxSide) && IsBetween(info.height, kMinHeight, kMaxSide) &&
         IsBetween(info.siting, VIDPROC_SITING_LEFT, VIDPROC_SITING_CENTRE);
}

FrameLayout LayoutOf(const vidproc_frame_info& info) {
  const auto width = static_cast<std::size_t>(info.width), height = static_cast<std::size_t>(info.height);
  const std::size_t pairs = (width + 1) / 2, rowPairs = (height + 1) / 2;
  const PlaneLayout luma = {height, width, width};
  switch (info.format) {
    case VIDPROC_FORMAT_NV12:
      return {2, {luma, {rowPairs, 2 * pairs, 2 * pairs}, {}}};
    case VIDPROC_FORMAT_I420:
      return {3, {luma, {rowPairs, pairs, pairs}, {rowPairs, pairs, pairs}}};
    case VIDPROC_FORMAT_I422:
      return {3, {luma, {height, pairs, pairs}, {height, pairs, pairs}}};
    default:  // packed
      return {1, {{height, 2 * width, 4 * pairs}, {}, {}}};
  }
}

std::size_t TightBytes(const FrameLayout& layout) {
  std::size_t bytes = 0;
  for (int p = 0; p < layout.planes; ++p) bytes += layout.plane[p].rows * layout.plane[p].wholeRowBytes;
  return bytes;
}

}  // namespace vidproc::api

using namespace vidproc::api;

extern "C" {

size_t vidproc_frame_bytes(const vidproc_frame_info* info) {
  return info == nullptr || !IsValid(*info) ? 0 : TightBytes(LayoutOf(*info));
}

vidproc_status vidproc_input_map(vidproc_input* frame, const vidproc_frame_info* info, const void* memory,
                                 size_t bytes) {
  const vidproc_status status = CheckBlock(frame, info, memory, bytes);
  if (status == VIDPROC_OK) MapPlanes(*frame, *info, static_cast<const std::uint8_t*>(memory));
  return status;
}

vidproc_status vidproc_output_map(vidproc_output* frame, const vidproc_frame_info* info, void* memory, size_t bytes) {
  const vidproc_status status = CheckBlock(frame, info, memory, bytes);
  if (status == VIDPROC_OK) MapPlanes(*frame, *info, static_cast<std::uint8_t*>(memory));
  return status;
}

}  // extern "C"
