// Dither noise as public members: the table of tiles of twelve strengths, and noise for a frame of the caller's.
//
// Strength s uses about s / 8 of the stored tile, which is Gaussian-like with a deviation of about 20; a sixteenth of
// that, rounded down, is added to luma and clamped to a byte.
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>

#include "kernels/kernel_table.h"
#include "kernels/noise_register.h"
#include "noise/frame_noise.h"
#include "vidproc/video_processor.h"

namespace {

using vidproc::kNoiseStrengths;
using vidproc::kNoiseTileCells;

struct Free {
  void operator()(void* memory) const { std::free(memory); }
};

/// Memory for one call, or null with a message. Compilers may keep a small buffer in registers and then never ask for
/// it; the pointer goes through volatile memory so that a lack of memory is always met and reported.
template <typename Value>
std::unique_ptr<Value, Free> Allocate(std::size_t count, const char* name) {
  void* volatile memory = std::malloc(count * sizeof(Value));
  std::unique_ptr<Value, Free> allocated(static_cast<Value*>(memory));
  if (allocated == nullptr) {
    std::fprintf(stderr, "{PostProcDitherNoiseUpon2VUY} Error on memory allocation: %s!\n", name);
  }
  return allocated;
}

/// Copies a row and adds the noise, block by block where it is written over the rest of its own source.
void CopyRowWithNoise(const unsigned char* from, unsigned char* to, std::uint32_t rowBytes, const signed char* noise,
                      const std::uint16_t* blockPosition) {
  const std::size_t distance = reinterpret_cast<std::uintptr_t>(to) - reinterpret_cast<std::uintptr_t>(from);
  const std::uint32_t piece = distance > 0 && distance < rowBytes ? vidproc::kNoiseBlockBytes : rowBytes;
  for (std::uint32_t b = 0; b < rowBytes; b += piece) {
    if (distance != 0) std::memmove(to + b, from + b, piece);
    vidproc::Kernels().addNoiseToRow(noise, blockPosition, to + b, b, b + piece);
  }
}

}  // namespace

int VideoProcessor::PostProcDitherNoiseLUTCreation(signed char** table) {
  if (table == nullptr) return -1;
  auto* created = static_cast<signed char*>(std::malloc(kNoiseStrengths * kNoiseTileCells));
  if (created == nullptr) {
    std::fputs("{PostProcDitherNoiseLUTCreation} Error on memory allocation: ditherNoiseLUTPtr!\n", stderr);
  } else {
    for (unsigned strength = 1; strength <= kNoiseStrengths; ++strength) {
      signed char* tile = created + (strength - 1) * kNoiseTileCells;
      for (int cell = 0; cell < kNoiseTileCells; ++cell) {
        tile[cell] = vidproc::ScaleNoise(Spherical_Theta2_Guassian_Scaled_2By3[cell], strength);
      }
    }
  }
  std::free(*table);
  *table = created;
  return created == nullptr ? -1 : 0;
}

int VideoProcessor::PostProcDitherNoiseUpon2VUY(unsigned char* source, unsigned char* destination, unsigned int pitch,
                                                unsigned short width, unsigned short height, unsigned int seed,
                                                unsigned short /*unused*/, unsigned char strength, signed char* table) {
  const std::uint32_t blocks = vidproc::NoiseBlocksPerRow(width);
  const auto blockPosition = Allocate<std::uint16_t>(blocks, "noiseBlkPosPtr");
  if (blockPosition == nullptr) return -1;
  // kept: memory is asked for a single word, because a lack of it has a message of its own.
  const auto registerState = Allocate<std::uint32_t>(1, "prngByLFSRPtr");
  if (registerState == nullptr) return -1;
  if (strength < 1 || strength > kNoiseStrengths) {
    std::fprintf(stderr, "{PostProcDitherNoiseUpon2VUY} Dithering noise strength (=%u) not currently supported.\n",
                 unsigned{strength});
    return -1;
  }
  if (source == nullptr || destination == nullptr || table == nullptr) return -1;

  signed char noise[2 * kNoiseTileCells];
  vidproc::SpreadNoiseTile(table, strength, noise);
  *registerState = vidproc::FirstNoiseState(seed);
  for (std::size_t y = 0; y < height; ++y) {
    const std::size_t rowOfBand = y % vidproc::kNoiseBlockSize;
    if (rowOfBand == 0) vidproc::DrawNoiseBand(*registerState, blockPosition.get(), blocks);
    // kept: the source advances by 16 bits of the pitch
    CopyRowWithNoise(source + y * (pitch & 0xFFFF), destination + y * pitch, blocks * vidproc::kNoiseBlockBytes,
                     noise + rowOfBand * vidproc::kNoiseTileRowBytes, blockPosition.get());
  }
  return 0;
}
