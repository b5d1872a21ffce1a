// Frames of every format for tests of the checked interface: one block of memory each, its planes apart.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "vidproc/vidproc.hpp"

namespace testing_support {

inline constexpr vidproc_format kFormats[] = {VIDPROC_FORMAT_UYVY, VIDPROC_FORMAT_YUYV, VIDPROC_FORMAT_NV12,
                                              VIDPROC_FORMAT_I420, VIDPROC_FORMAT_I422};
constexpr bool IsPacked(vidproc_format f) { return f == VIDPROC_FORMAT_UYVY || f == VIDPROC_FORMAT_YUYV; }
constexpr bool HalvesChromaRows(vidproc_format f) { return f == VIDPROC_FORMAT_NV12 || f == VIDPROC_FORMAT_I420; }

/// Options of a pre- or post-processor from I420 to NV12.
template <typename Options>
Options WithSizes(int inWidth, int inHeight, int outWidth, int outHeight) {
  Options options;
  options.input = {VIDPROC_FORMAT_I420, inWidth, inHeight, VIDPROC_SITING_LEFT};
  options.output = {VIDPROC_FORMAT_NV12, outWidth, outHeight, VIDPROC_SITING_LEFT};
  return options;
}

/// A frame without padding, every byte of it `fill`.
struct TightFrame {
  TightFrame(const vidproc_frame_info& frameInfo, std::uint8_t fill)
      : info(frameInfo), bytes(vidproc::FrameBytes(info), fill) {}

  vidproc_input Read() const { return vidproc::InputOver(info, bytes); }
  vidproc_output Write() { return vidproc::OutputOver(info, bytes); }

  vidproc_frame_info info;
  std::vector<std::uint8_t> bytes;
};

}  // namespace testing_support
