// Dither noise: luma + noise, clamped to a byte, on pieces of a frame. Chroma gets zeros added.
#include "kernels/kernel_table.h"
#include "kernels/noise_field.h"
#include "kernels/noise_register.h"
#include "kernels/passes/byte_arithmetic.h"
#include "simd/simd.h"

namespace vidproc::VIDPROC_TARGET {
namespace {

/// What a step of the vector loop covers: a block's row, or a vector where that is longer.
constexpr std::uint32_t kStepBytes = kVectorBytes > kNoiseBlockBytes ? kVectorBytes : kNoiseBlockBytes;

void AddVector(std::uint8_t* bytes, U8 noise) { Store(bytes, AddSignedBytes(LoadU8(bytes), noise)); }

/// One step, from the start of a block.
void AddStep(std::uint8_t* bytes, const signed char* noise, const std::uint16_t* blockPosition) {
  const auto* const tile = reinterpret_cast<const std::uint8_t*>(noise);
  if constexpr (kVectorBytes > kNoiseBlockBytes) {
    static_assert(kVectorBytes <= 2 * kNoiseBlockBytes);
    AddVector(bytes, LoadHalves(tile + 2 * blockPosition[0], tile + 2 * blockPosition[1]));
  } else {
    for (int b = 0; b < kNoiseBlockBytes; b += kVectorBytes) {
      AddVector(bytes + b, LoadU8(tile + 2 * blockPosition[0] + b));
    }
  }
}

/// Byte by byte, from the first luma byte on.
void AddToLuma(std::uint8_t* bytes, const signed char* noise, std::uint32_t firstLuma, std::uint32_t count) {
  for (std::uint32_t b = firstLuma; b < count; b += 2) {
    const int sum = bytes[b] + noise[b];
    bytes[b] = static_cast<std::uint8_t>(sum < 0 ? 0 : sum > 255 ? 255 : sum);
  }
}

}  // namespace

void AddNoiseToRow(const signed char* noise, const std::uint16_t* blockPosition, std::uint8_t* bytes,
                   std::uint32_t first, std::uint32_t end) {
  const auto addToRestOfBlock = [&] {
    const std::uint32_t inBlock = first % kNoiseBlockBytes;
    const std::uint32_t rest = kNoiseBlockBytes - inBlock;
    const std::uint32_t count = rest < end - first ? rest : end - first;
    AddToLuma(bytes, noise + 2 * blockPosition[first / kNoiseBlockBytes] + inBlock, (first + 1) % 2, count);
    first += count;
    bytes += count;
  };
  if (first % kNoiseBlockBytes != 0) addToRestOfBlock();
  for (; end - first >= kStepBytes; first += kStepBytes, bytes += kStepBytes) {
    AddStep(bytes, noise, blockPosition + first / kNoiseBlockBytes);
  }
  while (first < end) addToRestOfBlock();
}

void AddNoise(NoiseField& field, std::uint8_t* bytes, std::uint64_t offset, std::uint64_t count) {
  const std::uint32_t coveredBytes = field.blocksPerRow * kNoiseBlockBytes;
  if (coveredBytes == 0 || field.pitch < coveredBytes) return;
  const std::uint64_t end = offset + count;
  for (std::uint64_t row = offset / field.pitch; row < field.rows && row * field.pitch < end; ++row) {
    const std::uint64_t start = row * field.pitch;
    const std::uint64_t from = start > offset ? start : offset;
    const std::uint64_t to = start + coveredBytes < end ? start + coveredBytes : end;
    if (from >= to) continue;
    for (; field.nextBand <= row / kNoiseBlockSize; ++field.nextBand) {
      DrawNoiseBand(field.lfsr, field.blockPosition, field.blocksPerRow);
    }
    AddNoiseToRow(field.noise + row % kNoiseBlockSize * kNoiseTileRowBytes, field.blockPosition,
                  bytes + (from - offset), static_cast<std::uint32_t>(from - start),
                  static_cast<std::uint32_t>(to - start));
  }
}

}  // namespace vidproc::VIDPROC_TARGET
