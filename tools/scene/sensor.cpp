// Colour conversion and noise; see sensor.h.
#include "scene/sensor.h"

#include <algorithm>
#include <cmath>

namespace vidproc::scene {
namespace {

constexpr std::uint32_t kDeviates = 1 << 16;

// Variance of the noise in luma: what reading adds, and photons, whose number varies the more the more there are.
constexpr double kReadVariance = 1.5 * 1.5, kShotVariance = 0.09;
constexpr double kChromaShare = 0.6;  ///< of luma's deviation

/// Mixes the bits, so that neighbouring numbers have nothing in common (MurmurHash3's finisher).
std::uint32_t Mixed(std::uint32_t bits) {
  bits = (bits ^ (bits >> 16)) * 0x85ebca6bU;
  bits = (bits ^ (bits >> 13)) * 0xc2b2ae35U;
  return bits ^ (bits >> 16);
}

int Red(std::uint32_t pixel) { return static_cast<int>(pixel >> 16 & 255); }
int Green(std::uint32_t pixel) { return static_cast<int>(pixel >> 8 & 255); }
int Blue(std::uint32_t pixel) { return static_cast<int>(pixel & 255); }

}  // namespace

/// What light and noise make of each value, in one frame.
struct Sensor::Exposure {
  std::array<std::int32_t, 256> lumaLevel{}, chromaLevel{};          ///< in 65536ths
  std::array<std::int32_t, 256> lumaDeviation{}, chromaDeviation{};  ///< by captured luma, in 256ths
  std::uint32_t start = 0;                                           ///< of the frame's noise

  Exposure(double light, double noise, std::uint32_t start) : start(start) {
    for (int value = 0; value < 256; ++value) {
      const auto i = static_cast<std::size_t>(value);
      const double level = 16 + (value - 16) * light;
      const double deviation = noise * std::sqrt(kReadVariance + kShotVariance * std::max(0.0, level - 16));
      lumaLevel[i] = static_cast<std::int32_t>(std::lround(level * 65536)) + 32768;
      chromaLevel[i] = static_cast<std::int32_t>(std::lround((128 + (value - 128) * light) * 65536)) + 32768;
      lumaDeviation[i] = static_cast<std::int32_t>(std::lround(deviation * 256));
      chromaDeviation[i] = static_cast<std::int32_t>(std::lround(deviation * kChromaShare * 256));
    }
  }
  /// Where a row of plane 0, 1 or 2 begins among the deviates.
  std::uint32_t RowStart(int plane, int y) const {
    return Mixed(start + 4 * static_cast<std::uint32_t>(y) + static_cast<std::uint32_t>(plane)) % kDeviates;
  }
};

Sensor::Sensor(int width, int height, std::uint32_t seed, double noise)
    : width(width), height(height), pairs((width + 1) / 2), seed(seed), noise(noise) {
  const auto rows = static_cast<std::size_t>(height);
  luma.resize(rows * static_cast<std::size_t>(width));
  for (auto& plane : chroma) plane.resize(rows * static_cast<std::size_t>(pairs));
  // The sum of a word's bytes is nearly normal: mean 4 x 127.5, variance 4 x (256 x 256 - 1) / 12. Rows may run on
  // beyond the start of the last deviate.
  deviates.resize(kDeviates + static_cast<std::size_t>(width));
  const double unit = 256 / std::sqrt(4 * (256.0 * 256 - 1) / 12);
  for (std::uint32_t i = 0; i < deviates.size(); ++i) {
    const std::uint32_t word = Mixed(i % kDeviates + 0x9e3779b9U);
    const auto sum = static_cast<int>((word & 255) + (word >> 8 & 255) + (word >> 16 & 255) + (word >> 24));
    deviates[i] = static_cast<std::int16_t>(std::lround((sum - 510) * unit));
  }
}

const std::uint8_t* Sensor::Chroma(int which, int y) const {
  return chroma[static_cast<std::size_t>(which)].data() + static_cast<std::ptrdiff_t>(y) * pairs;
}

void Sensor::Capture(const RgbPicture& picture, const Area& area) {
  for (int y = area.top; y < area.bottom; ++y) {
    const std::uint32_t* pixels = picture.Row(y);
    CaptureLuma(pixels, y, area.left, area.right);
    CaptureChroma(pixels, y, area.left / 2, (area.right + 1) / 2);
  }
}

void Sensor::CaptureLuma(const std::uint32_t* pixels, int y, int left, int right) {
  std::uint8_t* row = luma.data() + static_cast<std::ptrdiff_t>(y) * width;
  for (int x = left; x < right; ++x) {
    const std::uint32_t pixel = pixels[x];
    const int sum = 11966 * Red(pixel) + 40254 * Green(pixel) + 4064 * Blue(pixel);  // 219 / 255 in 65536ths
    row[x] = static_cast<std::uint8_t>(16 + ((sum + 32768) >> 16));
  }
}

/// A pair's chroma stands at its left sample: that counts double, its neighbours once.
void Sensor::CaptureChroma(const std::uint32_t* pixels, int y, int first, int end) {
  const std::ptrdiff_t start = static_cast<std::ptrdiff_t>(y) * pairs;
  for (int i = first; i < end; ++i) {
    const std::uint32_t before = pixels[std::max(2 * i - 1, 0)], at = pixels[2 * i];
    const std::uint32_t after = pixels[std::min(2 * i + 1, width - 1)];
    const int red = Red(before) + 2 * Red(at) + Red(after);
    const int green = Green(before) + 2 * Green(at) + Green(after);
    const int blue = Blue(before) + 2 * Blue(at) + Blue(after);
    const int cb = -6596 * red - 22188 * green + 28784 * blue;  // 224 / 255 in 65536ths, of four samples
    const int cr = 28784 * red - 26145 * green - 2639 * blue;
    chroma[0][static_cast<std::size_t>(start + i)] = static_cast<std::uint8_t>(128 + ((cb + (1 << 17)) >> 18));
    chroma[1][static_cast<std::size_t>(start + i)] = static_cast<std::uint8_t>(128 + ((cr + (1 << 17)) >> 18));
  }
}

void Sensor::ReadLuma(const Exposure& exposure, int y, std::uint8_t* row) const {
  const std::uint8_t* captured = luma.data() + static_cast<std::ptrdiff_t>(y) * width;
  const std::int16_t* deviate = deviates.data() + exposure.RowStart(0, y);
  for (int x = 0; x < width; ++x) {
    const std::size_t value = captured[x];
    const int level = (exposure.lumaLevel[value] + exposure.lumaDeviation[value] * deviate[x]) >> 16;
    row[x] = static_cast<std::uint8_t>(std::clamp(level, 16, 235));
  }
}

void Sensor::ReadChroma(const Exposure& exposure, int which, int y, bool averaged, std::uint8_t* row) const {
  const int below = averaged ? std::min(y + 1, height - 1) : y;
  const std::uint8_t* upper = Chroma(which, y);
  const std::uint8_t* lower = Chroma(which, below);
  const std::uint8_t* brightness = luma.data() + static_cast<std::ptrdiff_t>(y) * width;
  const std::int16_t* deviate = deviates.data() + exposure.RowStart(1 + which, y);
  for (int i = 0; i < pairs; ++i) {
    const int pairLevel = (exposure.chromaLevel[upper[i]] + exposure.chromaLevel[lower[i]]) / 2;
    const int level = (pairLevel + exposure.chromaDeviation[brightness[2 * i]] * deviate[i]) >> 16;
    row[i] = static_cast<std::uint8_t>(std::clamp(level, 16, 240));
  }
}

void Sensor::ReadOut(std::int64_t number, double light, Format format, std::uint8_t* bytes) {
  const Exposure exposure(light, noise, Mixed(seed ^ Mixed(static_cast<std::uint32_t>(number) + 0x51ed270bU)));
  const auto columns = static_cast<std::size_t>(width), halfColumns = static_cast<std::size_t>(pairs);
  Row y(columns + 1), cb(halfColumns), cr(halfColumns);
  if (format == Format::kUyvy) {
    for (int row = 0; row < height; ++row) {
      ReadLuma(exposure, row, y.data());
      ReadChroma(exposure, 0, row, false, cb.data());
      ReadChroma(exposure, 1, row, false, cr.data());
      for (std::size_t i = 0; i < halfColumns; ++i, bytes += 4) {
        bytes[0] = cb[i];
        bytes[1] = y[2 * i];
        bytes[2] = cr[i];
        bytes[3] = y[2 * i + 1];
      }
    }
    return;
  }
  for (int row = 0; row < height; ++row, bytes += columns) ReadLuma(exposure, row, bytes);
  const std::size_t planeBytes = halfColumns * ((static_cast<std::size_t>(height) + 1) / 2);
  for (int row = 0; row < height; row += 2) {
    const std::size_t start = static_cast<std::size_t>(row / 2) * halfColumns;
    if (format == Format::kI420) {
      ReadChroma(exposure, 0, row, true, bytes + start);
      ReadChroma(exposure, 1, row, true, bytes + planeBytes + start);
      continue;
    }
    ReadChroma(exposure, 0, row, true, cb.data());
    ReadChroma(exposure, 1, row, true, cr.data());
    for (std::size_t i = 0; i < halfColumns; ++i) {
      bytes[2 * (start + i)] = cb[i];
      bytes[2 * (start + i) + 1] = cr[i];
    }
  }
}

}  // namespace vidproc::scene
