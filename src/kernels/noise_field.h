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

/// Writes the tile of `strength` of a dither table as it is added to frame bytes.
void SpreadNoiseTile(const signed char* table, unsigned strength, signed char* noise);

/// Lays out noise of `strength` (1..12) from a dither table.
/// @param pitch  in bytes; AddNoise asks for less than 65536, AddNoiseWhole takes any.
/// @param width  in pixels; kept: width and height count modulo 65536, and so does the width rounded up to 16.
void StartNoise(NoiseField& field, const signed char* table, unsigned strength, unsigned seed, std::uint32_t pitch,
                std::uint32_t width, std::uint32_t height);

/// Adds the noise to a whole frame whose linear byte o lies at base + o / rowBytes * stride + o % rowBytes; only the
/// first frameBytes linear bytes are read or changed. For any pitch; from 65536 upwards a row's source lies elsewhere.
void AddNoiseWhole(NoiseField& field, std::uint8_t* base, std::uint64_t rowBytes, std::uint64_t stride,
                   std::uint64_t frameBytes);

}  // namespace vidproc
