// Luma pictures to measure on: frames of a clip, or drawn ones.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

struct Picture {
  int width = 0, height = 0;
  std::vector<std::uint8_t> samples;

  Picture() = default;
  Picture(int width, int height)
      : width(width), height(height), samples(static_cast<std::size_t>(width) * static_cast<std::size_t>(height)) {}
  std::uint8_t* Row(int y) { return samples.data() + static_cast<std::ptrdiff_t>(y) * width; }
  const std::uint8_t* Row(int y) const { return samples.data() + static_cast<std::ptrdiff_t>(y) * width; }
};

/// Frames of a YUV4MPEG2 file of luma planes only, cut to multiples of kSizeUnit; at most `count`, evenly spread.
std::vector<Picture> ReadClip(const std::string& path, int count);

/// Rings about a point beside the centre, as fine as the sampling carries at the middle of each edge.
Picture DrawZonePlate(int size);

/// Discs over one another, few large and many small: edges of every direction, and a spectrum as photographs have it.
Picture DrawDiscs(int size);

/// Every ratio of the search divides it.
inline constexpr int kSizeUnit = 24;

/// Sum of the squared differences of two pictures of one size.
double SquaredError(const Picture& a, const Picture& b);
