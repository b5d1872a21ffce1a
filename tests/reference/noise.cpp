// Sample by sample: block positions from the shift register, one patch of the tile per 16 x 16 block.
#include "reference/noise.h"

#include <algorithm>

#include "reference/lane.h"

namespace reference {
namespace {

constexpr std::size_t kTileBytes = 64 * 64;

std::uint32_t Step(std::uint32_t state) {
  const std::uint32_t feedback = ((state >> 30) ^ (state >> 27)) & 1;
  return ((state << 1) & 0x7FFFFFFFu) | feedback;
}

std::size_t PatchOffset(std::uint32_t state) {
  const std::uint32_t row = ((state >> 16) % 50) & ~1u;
  const std::uint32_t column = ((state & 0xFFFF) % 52) & ~3u;
  return row * 64 + column;
}

}  // namespace

std::vector<signed char> MakeNoiseTiles(const signed char* storedTile) {
  std::vector<signed char> tiles(12 * kTileBytes);
  for (int strength = 1; strength <= 12; ++strength) {
    for (std::size_t at = 0; at < kTileBytes; ++at) {
      const int value = storedTile[at];
      int sum = 0;
      if (strength & 8) sum += value;
      if (strength & 4) sum += value >> 1;
      if (strength & 2) sum += value >> 2;
      if (strength & 1) sum += value >> 3;
      tiles[static_cast<std::size_t>(strength - 1) * kTileBytes + at] = static_cast<signed char>(sum);
    }
  }
  return tiles;
}

void AddNoise(const Noise& noise, const std::uint8_t* source, std::uint8_t* destination, std::size_t limit) {
  if (noise.strength < 1) return;
  const std::size_t width = noise.width & 0xFFFF;
  const std::size_t height = noise.height & 0xFFFF;
  const std::size_t blocks = ((width + 15) & 0xFFFF) / 16;
  const std::size_t sourcePitch = noise.pitch & 0xFFFF;  // kept: the source row advances by 16 bits of the pitch
  const signed char* tile = noise.tiles + static_cast<std::size_t>(noise.strength - 1) * kTileBytes;
  std::uint32_t state = noise.seedTable[noise.seed & 255] & 0x7FFFFFFFu;
  std::vector<std::size_t> patches(blocks);
  for (std::size_t band = 0; band < height; band += 16) {
    for (std::size_t& patch : patches) patch = PatchOffset(state = Step(state));
    for (std::size_t row = band; row < std::min(band + 16, height); ++row) {
      for (std::size_t b = 0; b < blocks * 32; ++b) {
        const std::size_t to = row * noise.pitch + b;
        if (to >= limit) break;
        const int value = source[row * sourcePitch + b];
        const bool luma = b % 2 == 1;
        const int z = tile[patches[b / 32] + 64 * (row - band) + b % 32 / 2];
        destination[to] = ClampToByte(luma ? value + (z >> 4) : value);
      }
    }
  }
}

}  // namespace reference
