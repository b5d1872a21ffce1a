// Options and frames of the checked interface, drawn from an input.
#pragma once

#include <algorithm>
#include <cstring>
#include <memory>
#include <type_traits>
#include <vector>

#include "api/frame_layout.h"
#include "api/option_checks.h"
#include "memory.h"
#include "tests/support/api_frames.h"
#include "vidproc/vidproc.hpp"

namespace fuzzing {

template <typename Options>
constexpr bool kIsPre = std::is_same_v<Options, vidproc_pre_options>;

template <typename Options>
const vidproc::api::OptionTable& TableOf() {
  if constexpr (kIsPre<Options>) return vidproc::api::kPreOptions;
  if constexpr (std::is_same_v<Options, vidproc_post_options>) return vidproc::api::kPostOptions;
  return vidproc::api::kExposureOptions;
}

inline vidproc_frame_info DrawInfo(Input& input) {
  const int width = input.Between(2, input.OneIn(4) ? 200 : 40), height = input.Between(1, input.OneIn(4) ? 90 : 24);
  return {input.Between(VIDPROC_FORMAT_UYVY, VIDPROC_FORMAT_I422), width, height, input.Between(0, 1)};
}

/// Every field within its range; a few combinations of them are refused.
template <typename Options>
Options DrawOptions(Input& input) {
  Options options;
  vidproc::api::WriteDefaults(TableOf<Options>(), &options, sizeof(options));
  for (const auto fields : {TableOf<Options>().shared, TableOf<Options>().own}) {
    for (const vidproc_option& field : fields) {
      if (!input.OneIn(3)) continue;
      const std::int32_t value = input.OneIn(4) ? field.also : input.Between(field.low, field.high);
      std::memcpy(reinterpret_cast<char*>(&options) + field.offset, &value, sizeof(value));
    }
  }
  options.input = DrawInfo(input);
  if constexpr (requires { options.output; }) {
    options.output = DrawInfo(input);
    if (input.OneIn(3)) std::memcpy(&options.output, &options.input, sizeof(options.input));
    if (options.dither_seed < 0) options.dither_seed = 0;
  }
  return options;
}

/// One component of a frame.
struct Samples {
  std::uint8_t* first;
  std::ptrdiff_t step, stride;
  int width, height;
  std::uint8_t& At(int x, int y) const { return first[y * stride + x * step]; }
};

/// Luma, Cb or Cr of a frame whose strides hold whole rows.
inline Samples ComponentOf(const vidproc_output& f, int c) {
  const int width = c == 0 ? f.width : (f.width + 1) / 2;
  const int height = c == 0 || !testing_support::HalvesChromaRows(f.format) ? f.height : (f.height + 1) / 2;
  switch (f.format) {
    case VIDPROC_FORMAT_UYVY:
      return {f.plane[0] + (c == 0 ? 1 : 2 * (c - 1)), c == 0 ? 2 : 4, f.stride[0], width, height};
    case VIDPROC_FORMAT_YUYV:
      return {f.plane[0] + (c == 0 ? 0 : 2 * c - 1), c == 0 ? 2 : 4, f.stride[0], width, height};
    case VIDPROC_FORMAT_NV12:
      return {f.plane[c == 0 ? 0 : 1] + (c == 2), c == 0 ? 1 : 2, f.stride[c == 0 ? 0 : 1], width, height};
    default:
      return {f.plane[c], 1, f.stride[c], width, height};
  }
}

inline vidproc_input AsInput(const vidproc_output& f) {
  return {f.format,
          f.width,
          f.height,
          {f.plane[0], f.plane[1], f.plane[2]},
          {f.stride[0], f.stride[1], f.stride[2]},
          {f.bytes[0], f.bytes[1], f.bytes[2]}};
}

/// A frame whose planes are blocks of their own, each of exactly its bytes.
struct PlacedFrame {
  vidproc_output view = {};
  std::vector<Block> planes;

  /// Planes of the given strides; `bytes` limits what a plane's block has.
  PlacedFrame(const vidproc_frame_info& info, const std::ptrdiff_t (&strides)[3], std::size_t bytes) {
    view = {info.format, info.width, info.height, {}, {}, {}};
    const vidproc::api::FrameLayout layout = vidproc::api::LayoutOf(info);
    for (int p = 0; p < layout.planes; ++p) {
      const vidproc::api::PlaneLayout& plane = layout.plane[p];
      const auto stride = static_cast<std::size_t>(strides[p] < 0 ? -(strides[p] + 1) : strides[p]) + (strides[p] < 0);
      const std::size_t reach = stride > kMostFrameBytes ? kMostFrameBytes : (plane.rows - 1) * stride;
      view.bytes[p] = std::min(reach + plane.TouchedRowBytes(stride), bytes);
      planes.emplace_back(view.bytes[p]);
      // A bottom-up plane's top row lies at the end; of refused planes that may be anywhere.
      const auto low = reinterpret_cast<std::uintptr_t>(planes.back().Start());
      view.plane[p] = reinterpret_cast<std::uint8_t*>(strides[p] < 0 ? low + (plane.rows - 1) * stride : low);
      view.stride[p] = strides[p];
    }
  }

  void Fill(Input& input) {
    for (Block& plane : planes) plane.Fill(input);
  }
  std::uint64_t DigestOfAll() const {
    Digest digest;
    for (const Block& plane : planes) plane.AddTo(digest);
    return digest.Value();
  }
};

/// Strides that hold whole rows, of either sign.
inline void DrawStrides(const vidproc_frame_info& info, Input& input, std::ptrdiff_t (&strides)[3]) {
  const vidproc::api::FrameLayout layout = vidproc::api::LayoutOf(info);
  const int kind = input.Between(0, 3);
  for (int p = 0; p < layout.planes; ++p) {
    strides[p] = static_cast<std::ptrdiff_t>(layout.plane[p].wholeRowBytes) + (kind < 2 ? 0 : input.Between(0, 70));
    if (kind % 2 != 0) strides[p] = -strides[p];
  }
}

}  // namespace fuzzing
