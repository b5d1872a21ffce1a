#include "frames.h"

#include <map>
#include <tuple>
#include <utility>

#include "scene/scene.h"

// Peers that work on planes must not look slow for a slow conversion.
#if defined(__x86_64__)
#define FOR_WIDE_VECTORS __attribute__((target_clones("avx2", "default")))
#else
#define FOR_WIDE_VECTORS
#endif

namespace bench {
namespace {

vidproc::scene::Format SceneFormat(Format format) {
  switch (format) {
    case Format::kNv12:
      return vidproc::scene::Format::kNv12;
    case Format::kI420:
      return vidproc::scene::Format::kI420;
    default:
      return vidproc::scene::Format::kUyvy;
  }
}

vidproc::scene::Scene& SceneOf(Size size) {
  static std::map<std::pair<int, int>, vidproc::scene::Scene> scenes;
  const vidproc::scene::Settings settings{size.width, size.height};
  return scenes.try_emplace({size.width, size.height}, settings).first->second;
}

}  // namespace

std::size_t FrameBytes(Format format, Size size) {
  return vidproc::scene::FrameBytes(SceneFormat(format), size.width, size.height);
}

const Bytes& Frame(Format format, Size size, int index) {
  static std::map<std::tuple<Format, int, int, int>, Bytes> drawn;
  const auto [entry, isNew] = drawn.try_emplace({format, size.width, size.height, index});
  if (isNew) {
    entry->second.resize(FrameBytes(format, size));
    SceneOf(size).Render(index, SceneFormat(format), entry->second.data());
  }
  return entry->second;
}

FOR_WIDE_VECTORS void UnpackRow(const std::uint8_t* __restrict packed, int width, std::uint8_t* __restrict luma,
                                std::uint8_t* __restrict cb, std::uint8_t* __restrict cr) {
  for (int k = 0; k < width / 2; ++k) {
    cb[k] = packed[4 * k];
    luma[2 * k] = packed[4 * k + 1];
    cr[k] = packed[4 * k + 2];
    luma[2 * k + 1] = packed[4 * k + 3];
  }
}

FOR_WIDE_VECTORS void PackRow(const std::uint8_t* __restrict luma, const std::uint8_t* __restrict cb,
                              const std::uint8_t* __restrict cr, int width, std::uint8_t* __restrict packed) {
  for (int k = 0; k < width / 2; ++k) {
    packed[4 * k] = cb[k];
    packed[4 * k + 1] = luma[2 * k];
    packed[4 * k + 2] = cr[k];
    packed[4 * k + 3] = luma[2 * k + 1];
  }
}

FOR_WIDE_VECTORS void SplitRow(const std::uint8_t* __restrict pairs, int count, std::uint8_t* __restrict cb,
                               std::uint8_t* __restrict cr) {
  for (int k = 0; k < count; ++k) {
    cb[k] = pairs[2 * k];
    cr[k] = pairs[2 * k + 1];
  }
}

FOR_WIDE_VECTORS void MergeRow(const std::uint8_t* __restrict cb, const std::uint8_t* __restrict cr, int count,
                               std::uint8_t* __restrict pairs) {
  for (int k = 0; k < count; ++k) {
    pairs[2 * k] = cb[k];
    pairs[2 * k + 1] = cr[k];
  }
}

}  // namespace bench
