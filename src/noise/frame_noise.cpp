#include "noise/frame_noise.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <ctime>

#include "kernels/kernel_table.h"
#include "kernels/noise_register.h"
#include "vidproc/video_processor.h"

namespace vidproc {

bool StartFrameNoise(VideoProcessor& p, NoiseRule rule, NoiseField& field) {
  if (rule == NoiseRule::kNone) return false;
  const bool sizedByOutput = rule == NoiseRule::kSizedByOutput;
  const bool isOff = p.ditherLevel == 0 || (sizedByOutput && static_cast<std::int32_t>(p.ditherLevel) < 0);
  if (isOff) return false;
  if (p.ditherLevel > kNoiseStrengths) p.ditherLevel = kNoiseStrengths;
  if (p.ditherTable == nullptr) return false;
  const auto seed = static_cast<unsigned>(p.ditherSeed == -1 ? std::clock() : p.ditherSeed);
  const std::uint32_t width = sizedByOutput ? p.outWidth : p.inWidth;
  const std::uint32_t height = sizedByOutput ? p.outHeight : p.inHeight;
  const std::uint32_t pitch = 2 * ((width + 15) & ~15u);
  StartNoise(field, p.ditherTable, p.ditherLevel, seed, pitch, width, height);
  return true;
}

std::uint32_t FirstNoiseState(unsigned seed) { return LFSR_SEED_TABLE[seed & 0xFF] & kNoiseRegisterMask; }

/// Each eighth is rounded down for itself.
signed char ScaleNoise(signed char cell, unsigned strength) {
  int sum = 0;
  for (unsigned shift = 0; shift < 4; ++shift) {
    if ((strength & 8u >> shift) != 0) sum += cell >> shift;
  }
  return static_cast<signed char>(sum);
}

void MakeLumaNoiseTile(unsigned strength, signed char* tile) {
  for (int cell = 0; cell < kNoiseTileCells; ++cell) {
    tile[cell] = NoiseOfCell(ScaleNoise(Spherical_Theta2_Guassian_Scaled_2By3[cell], strength));
  }
}

void SpreadNoiseTile(const signed char* table, unsigned strength, signed char* noise) {
  const signed char* tile = table + (strength - 1) * kNoiseTileCells;
  for (int cell = 0; cell < kNoiseTileCells; ++cell) {
    noise[2 * cell] = 0;
    noise[2 * cell + 1] = NoiseOfCell(tile[cell]);
  }
}

void StartNoise(NoiseField& field, const signed char* table, unsigned strength, unsigned seed, std::uint32_t pitch,
                std::uint32_t width, std::uint32_t height) {
  field.lfsr = FirstNoiseState(seed);
  field.pitch = pitch;
  field.blocksPerRow = NoiseBlocksPerRow(width);
  field.rows = height & 0xFFFF;
  field.nextBand = 0;
  SpreadNoiseTile(table, strength, field.noise);
}

void AddNoiseWhole(NoiseField& field, std::uint8_t* base, std::uint64_t rowBytes, std::uint64_t stride,
                   std::uint64_t frameBytes) {
  // A row's source lies a multiple of this before it: no piece is longer, so that each is read before it is changed.
  constexpr std::uint64_t kSourceDistance = 65536;
  const auto at = [=](std::uint64_t offset) { return base + offset / rowBytes * stride + offset % rowBytes; };
  const std::uint64_t coveredBytes = std::uint64_t{field.blocksPerRow} * kNoiseBlockBytes;
  for (std::uint32_t y = 0; y < field.rows; ++y) {
    const std::uint64_t to = std::uint64_t{y} * field.pitch;
    const std::uint64_t from = std::uint64_t{y} * (field.pitch % kSourceDistance);  // kept: 16 bits of the pitch
    if (to >= frameBytes) return;
    if (y % kNoiseBlockSize == 0) DrawNoiseBand(field.lfsr, field.blockPosition, field.blocksPerRow);
    const signed char* noise = field.noise + y % kNoiseBlockSize * kNoiseTileRowBytes;
    const std::uint64_t end = std::min(coveredBytes, frameBytes - to);
    for (std::uint64_t b = 0; b < end;) {
      const std::uint64_t rest = rowBytes - std::max((from + b) % rowBytes, (to + b) % rowBytes);
      const std::uint64_t count = std::min({end - b, rest, kSourceDistance});
      if (from != to) std::memcpy(at(to + b), at(from + b), static_cast<std::size_t>(count));
      Kernels().addNoiseToRow(noise, field.blockPosition, at(to + b), static_cast<std::uint32_t>(b),
                              static_cast<std::uint32_t>(b + count));
      b += count;
    }
  }
}

}  // namespace vidproc
