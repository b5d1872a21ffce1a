// Dither noise, written plainly: noise tiles of twelve strengths, and their addition to the luma of a frame that is
// seen as one linear piece of memory.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace reference {

/// The twelve 64 x 64 tiles made from the stored one.
std::vector<signed char> MakeNoiseTiles(const signed char* storedTile);

struct Noise {
  int strength = 0;  ///< 1..12; below 1 there is no noise
  unsigned seed = 0;
  const std::uint32_t* seedTable = nullptr;
  const signed char* tiles = nullptr;
  std::size_t width = 0;  ///< geometry that the noise is laid out with, in pixels and rows
  std::size_t height = 0;
  std::size_t pitch = 0;
};

/// The usual pitch of a noise geometry: whole blocks of 16 pixels.
inline std::size_t NoisePitch(std::size_t width) { return (width + 15) / 16 * 16 * 2; }

/// Adds noise to the first `limit` bytes; nothing after them is read or written. Source and destination may be one.
void AddNoise(const Noise& noise, const std::uint8_t* source, std::uint8_t* destination, std::size_t limit);

}  // namespace reference
