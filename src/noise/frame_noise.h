// The dither noise of a frame: set-up, and the form for rows of 64 KB and more. Kernels add the noise of shorter rows
// piece by piece (kernels/noise.cpp).
#pragma once

#include <cstdint>

#include "kernels/noise_field.h"

class VideoProcessor;

namespace vidproc {

enum class NoiseRule {
  kNone,
  kSizedByInput,   ///< kept: the pre-processor lays its noise out by the input frame
  kSizedByOutput,  ///< the post-processor; its level is signed, below 1 is none
};

/// Lays out the processor's noise for its next frame in `field` and clamps its ditherLevel to 12.
/// @return whether there is noise: not without a table.
bool StartFrameNoise(VideoProcessor& processor, NoiseRule rule, NoiseField& field);

/// Blocks that a row of the noise is made of. kept: the width rounded up to 16 pixels counts modulo 65536.
constexpr std::uint32_t NoiseBlocksPerRow(std::uint32_t width) { return ((width + 15) & 0xFFFF) / kNoiseBlockSize; }

/// The state of the shift register that a seed stands for; only its low 8 bits count.
std::uint32_t FirstNoiseState(unsigned seed);

/// A cell of the stored tile as the dither table holds it for a strength, and as it is added to a sample.
signed char ScaleNoise(signed char cell, unsigned strength);
constexpr signed char NoiseOfCell(signed char scaled) { return static_cast<signed char>(scaled >> 4); }

/// Writes the tile of `strength` (1..12) as it is added to luma samples: kNoiseTileSize of them a row.
void MakeLumaNoiseTile(unsigned strength, signed char* tile);

/// Writes the tile of `strength` of a dither table as it is added to frame bytes.
void SpreadNoiseTile(const signed char* table, unsigned strength, signed char* noise);

/// Lays out noise of `strength` (1..12) from a dither table.
/// @param pitch  in bytes; the kernel asks for less than 65536, AddNoiseWhole takes any.
/// @param width  in pixels; kept: width and height count modulo 65536.
void StartNoise(NoiseField& field, const signed char* table, unsigned strength, unsigned seed, std::uint32_t pitch,
                std::uint32_t width, std::uint32_t height);

/// Adds the noise to a whole frame whose linear byte o lies at base + o / rowBytes * stride + o % rowBytes; only the
/// first frameBytes linear bytes are read or changed. For any pitch; from 65536 upwards a row's source lies elsewhere.
void AddNoiseWhole(NoiseField& field, std::uint8_t* base, std::uint64_t rowBytes, std::uint64_t stride,
                   std::uint64_t frameBytes);

}  // namespace vidproc
