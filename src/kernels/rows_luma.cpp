// What becomes of finished luma samples: gain and offset, dither noise.
#include "kernels/kernel_table.h"
#include "kernels/noise_field.h"
#include "kernels/passes/result_policy.h"
#include "kernels/passes/vector_walk.h"
#include "simd/simd.h"

namespace vidproc::VIDPROC_TARGET {
namespace {

/// The lanes of a row from `first` on that do not fill a vector, by way of one.
template <class Operation>
void FinishRow(const std::uint8_t* in, std::int32_t bytes, std::uint8_t* out, const Operation& operation) {
  std::uint8_t rest[kVectorBytes] = {};
  if (bytes <= 0) return;
  __builtin_memcpy(rest, in, static_cast<std::size_t>(bytes));
  operation(rest);
  __builtin_memcpy(out, rest, static_cast<std::size_t>(bytes));
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
  for (int b = 0; b < bytes; ++b) {
    const int sum = luma[b] + noise[blockPosition[b / kNoiseBlockSize] + b % kNoiseBlockSize];
    luma[b] = static_cast<std::uint8_t>(Clamp(sum, 0, 255));
  }
}

}  // namespace vidproc::VIDPROC_TARGET
