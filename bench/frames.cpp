#include "frames.h"

#include <cmath>
#include <map>
#include <tuple>

// Peers that work on planes must not look slow for a slow conversion.
#if defined(__x86_64__)
#define FOR_WIDE_VECTORS __attribute__((target_clones("avx2", "default")))
#else
#define FOR_WIDE_VECTORS
#endif

namespace bench {
namespace {

constexpr int kNoiseAmplitude = 2;

/// A cheap hash in place of a generator: samples can be drawn in any order.
int Noise(std::uint32_t x, std::uint32_t y, std::uint32_t index) {
  std::uint32_t bits = (x * 0x9E3779B1u) ^ (y * 0x85EBCA77u) ^ (index * 0xC2B2AE3Du);
  bits = (bits ^ (bits >> 15)) * 0x2C1B3C6Du;
  return static_cast<int>((bits >> 16) % (2 * kNoiseAmplitude + 1)) - kNoiseAmplitude;
}

std::uint8_t Clamped(int value) { return static_cast<std::uint8_t>(value < 16 ? 16 : value > 235 ? 235 : value); }

/// Draws 4:2:2 with chroma on every row.
class Scene {
 public:
  Scene(Size frameSize, int frameIndex) : size(frameSize), index(frameIndex), wave(kWaveLength) {
    for (int i = 0; i < kWaveLength; ++i) {
      wave[static_cast<std::size_t>(i)] =
          static_cast<int>(std::lround(127 * std::sin(i * 2 * 3.14159265 / kWaveLength)));
    }
  }

  std::uint8_t Luma(int x, int y) const {
    const int shading = 60 + 90 * x / size.width + 30 * y / size.height;
    const int texture = Wave(x * 37 + y * 11) * Wave(y * 23 - x * 5) / 1400;
    const bool inForeground = (x - index * 2) / 48 % 5 == 2 && y / 40 % 3 == 1;
    return Clamped(shading + texture + (inForeground ? 45 : 0) + NoiseAt(x, y));
  }
  std::uint8_t Cb(int pair, int y) const { return Clamped(100 + 110 * pair / size.width + NoiseAt(pair, y + 7919)); }
  std::uint8_t Cr(int pair, int y) const { return Clamped(150 - 40 * y / size.height + NoiseAt(pair, y + 15887)); }

 private:
  static constexpr int kWaveLength = 256;
  int Wave(int angle) const { return wave[static_cast<std::size_t>(angle & (kWaveLength - 1))]; }
  int NoiseAt(int x, int y) const {
    return Noise(static_cast<std::uint32_t>(x), static_cast<std::uint32_t>(y), static_cast<std::uint32_t>(index));
  }

  Size size;
  int index;
  std::vector<int> wave;
};

Bytes Draw(Format format, Size size, int index) {
  Bytes frame(FrameBytes(format, size));
  const Scene scene(size, index);
  std::uint8_t* sample = frame.data();
  for (int y = 0; y < size.height; ++y) {
    for (int x = 0; x < size.width; x += 2) {
      if (format == Format::kPacked422) *sample++ = scene.Cb(x / 2, y);
      *sample++ = scene.Luma(x, y);
      if (format == Format::kPacked422) *sample++ = scene.Cr(x / 2, y);
      *sample++ = scene.Luma(x + 1, y);
    }
  }
  if (format == Format::kPacked422) return frame;
  const std::ptrdiff_t chromaSamples = static_cast<std::ptrdiff_t>(size.width) * size.height / 4;
  const std::ptrdiff_t step = format == Format::kNv12 ? 2 : 1, crOffset = format == Format::kNv12 ? 1 : chromaSamples;
  for (int y = 0; y < size.height; y += 2) {
    for (int pair = 0; pair < size.width / 2; ++pair, sample += step) {
      *sample = scene.Cb(pair, y);
      sample[crOffset] = scene.Cr(pair, y);
    }
  }
  return frame;
}

}  // namespace

std::size_t FrameBytes(Format format, Size size) {
  const std::size_t pixels = static_cast<std::size_t>(size.width) * static_cast<std::size_t>(size.height);
  return format == Format::kPacked422 ? pixels * 2 : pixels * 3 / 2;
}

const Bytes& Frame(Format format, Size size, int index) {
  static std::map<std::tuple<Format, int, int, int>, Bytes> drawn;
  const auto [entry, isNew] = drawn.try_emplace({format, size.width, size.height, index});
  if (isNew) entry->second = Draw(format, size, index);
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
