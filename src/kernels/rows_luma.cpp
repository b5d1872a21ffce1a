// What becomes of finished luma samples: gain and offset, dither noise.
#include <cstring>

#include "kernels/kernel_table.h"
#include "kernels/noise_field.h"
#include "kernels/passes/byte_arithmetic.h"
#include "kernels/passes/result_policy.h"
#include "simd/simd.h"

namespace vidproc::VIDPROC_TARGET {
namespace {

/// The lanes of a row from `first` on that do not fill a vector, by way of one.
template <class Operation>
void FinishRow(const std::uint8_t* in, std::int32_t bytes, std::uint8_t* out, const Operation& operation) {
  std::uint8_t rest[kVectorBytes] = {};
  if (bytes <= 0) return;
  std::memcpy(rest, in, static_cast<std::size_t>(bytes));
  operation(rest);
  std::memcpy(out, rest, static_cast<std::size_t>(bytes));
}

/// Blocks of noise under a vector of luma.
constexpr int kBlocks = kVectorBytes / kNoiseBlockSize;

/// The noise of a vector of luma, of which `blocks` are in the row.
U8 LoadNoise(const signed char* noise, const std::uint16_t* blockPosition, int blocks) {
  std::int32_t offsets[kBlocks];
  for (int i = 0; i < kBlocks; ++i) offsets[i] = blockPosition[i < blocks ? i : 0];
  return LoadTilesAt(reinterpret_cast<const std::uint8_t*>(noise), offsets);
}

}  // namespace

void ShiftLumaRow(const std::uint8_t* luma, std::int32_t bytes, std::int16_t gain, std::int16_t offset,
                  std::uint8_t* out) {
  const LumaShiftResult shift{SplatI16(gain), SplatI16(offset)};
  int b = 0;
  for (; b + kLanes <= bytes; b += kLanes) shift.Put(out + b, LoadWiden(luma + b));
  FinishRow(luma + b, bytes - b, out + b, [&](std::uint8_t* rest) { shift.Put(rest, LoadWiden(rest)); });
}

void AddNoiseToLumaRow(const signed char* noise, const std::uint16_t* blockPosition, std::uint8_t* luma,
                       std::int32_t bytes) {
  int b = 0;
  for (; b + kVectorBytes <= bytes; b += kVectorBytes) {
    Store(luma + b, AddSignedBytes(LoadU8(luma + b), LoadNoise(noise, blockPosition + b / kNoiseBlockSize, kBlocks)));
  }
  FinishRow(luma + b, bytes - b, luma + b, [&](std::uint8_t* rest) {
    const int blocks = (bytes - b + kNoiseBlockSize - 1) / kNoiseBlockSize;
    Store(rest, AddSignedBytes(LoadU8(rest), LoadNoise(noise, blockPosition + b / kNoiseBlockSize, blocks)));
  });
}

}  // namespace vidproc::VIDPROC_TARGET
