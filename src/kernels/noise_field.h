// Dither noise over a frame that is seen as one linear piece of memory, as plain data. The noise has a geometry of its
// own, which need not be the frame's: row y of the noise covers 32 * blocksPerRow bytes from byte y * pitch. Every 16
// rows form a band, in which each block of 16 pixels takes its noise from a patch of the tile drawn for that block.
#pragma once

#include <cstdint>

namespace vidproc {

constexpr int kNoiseStrengths = 12;  ///< 1..12, a tile of the dither table each
constexpr int kNoiseTileSize = 64;   ///< rows and columns of a tile
constexpr int kNoiseTileCells = kNoiseTileSize * kNoiseTileSize;
constexpr int kNoiseTileRowBytes = 2 * kNoiseTileSize;  ///< of one row of NoiseField::noise
constexpr int kNoiseBlockSize = 16;                     ///< rows and pixels of a block
constexpr int kNoiseBlockBytes = 2 * kNoiseBlockSize;   ///< of one row of a block in the frame

struct NoiseField {
  std::uint32_t lfsr;          ///< shift register, 31 bits
  std::uint32_t pitch;         ///< bytes from one noise row to the next, at least those that the row covers
  std::uint32_t blocksPerRow;  ///< 0..4095
  std::uint32_t rows;
  std::uint32_t nextBand;  ///< first band whose positions have not been drawn yet
  /// The current band's patches: row * kNoiseTileSize + column of the tile.
  std::uint16_t blockPosition[4096];
  /// The tile as it is added to frame bytes: 0 for chroma, -8..7 for luma, in turn.
  signed char noise[2 * kNoiseTileCells];
};

}  // namespace vidproc
