// The public fields of the processor object, and how a fuzzer writes each of them.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <limits>
#include <type_traits>

#include "input.h"
#include "tests/support/fast_noise.h"
#include "vidproc/video_processor.h"

namespace fuzzing {

using Object = VideoProcessor;

/// Groups of eight equal values: what lanes hold.
template <typename Lanes>
void DrawCoefficients(Lanes& lanes, Input& input) {
  auto* const values = reinterpret_cast<std::int16_t*>(&lanes);
  const int kind = input.Between(0, 2);
  testing_support::FastNoise noise(input.Word());
  std::int16_t value = 0;
  for (std::size_t i = 0; i < sizeof(lanes) / sizeof(std::int16_t); ++i) {
    if (i % 8 == 0) {
      const std::uint32_t drawn = noise.Bits() >> 16;
      value = static_cast<std::int16_t>(kind == 0 ? drawn % 320 - 160 : kind == 1 ? (drawn % 4 == 0 ? 128 : 0) : drawn);
    }
    values[i] = value;
  }
}

/// A ratio by which the last output lies on the last sample of the source or right behind it, in small numbers or in
/// the largest that there are.
inline void DrawRatio(std::uint32_t in, std::uint32_t out, Input& input, std::int32_t& up, std::int32_t& down) {
  const std::int64_t outputs = std::max<std::int64_t>(std::int64_t{out} - 1, 1), inputs = in;
  const std::int64_t largest = std::numeric_limits<std::int32_t>::max();
  const std::int64_t factor = input.OneIn(2) ? 1 : std::max<std::int64_t>(largest / std::max(outputs, inputs + 1), 1);
  up = static_cast<std::int32_t>(factor * outputs);
  down = static_cast<std::int32_t>(factor * inputs - input.Between(0, 1));
}

template <auto kField>
void WriteField(Object& p, Input& input) {
  using Field = std::remove_reference_t<decltype(p.*kField)>;
  if constexpr (std::is_array_v<Field>) {
    DrawCoefficients(p.*kField, input);
    std::fill(std::begin(p.lumaOffset), std::end(p.lumaOffset), p.lumaOffset[0]);
  } else {
    p.*kField = static_cast<Field>(input.Any());
  }
}
template <>
inline void WriteField<&Object::windowKind>(Object& p, Input& input) {
  p.windowKind = input.Byte() % 3;  // any other ends the process by design
}
template <>
inline void WriteField<&Object::horizontalUp>(Object& p, Input& input) {
  DrawRatio(p.inWidth, p.outWidth, input, p.horizontalUp, p.horizontalDown);
}
template <>
inline void WriteField<&Object::verticalUp>(Object& p, Input& input) {
  DrawRatio(p.inHeight, p.outHeight, input, p.verticalUp, p.verticalDown);
}

template <auto... kFields>
constexpr void (*kWriters[])(Object&, Input&) = {WriteField<kFields>...};

inline constexpr const auto& kWriteField =
    kWriters<&Object::cpuLevel, &Object::spatialMotionSmoothing, &Object::temporalShift, &Object::temporalStrength,
             &Object::temporalFirstFrame, &Object::deblockLevel, &Object::use16Taps, &Object::adaptive,
             &Object::softenLevel, &Object::ditherLevel, &Object::horizontalUp, &Object::horizontalDown,
             &Object::verticalUp, &Object::verticalDown, &Object::inStride, &Object::outStride, &Object::filtersReady,
             &Object::enhanceHorizontal, &Object::enhanceVertical, &Object::inWidth, &Object::inHeight,
             &Object::outWidth, &Object::outHeight, &Object::lanczosLobes, &Object::enhanceType,
             &Object::enhanceStrength, &Object::isPreProcessor, &Object::ditherSeed, &Object::deblockTestPattern,
             &Object::windowKind, &Object::lumaGain, &Object::lumaGainInverse, &Object::lumaOffset,
             &Object::horizontalFilter, &Object::verticalFilter, &Object::enhanceKernel, &Object::horizontalFilterLanes,
             &Object::verticalFilterLanes, &Object::deblockHorizontalFilterLanes, &Object::deblockVerticalFilterLanes>;

}  // namespace fuzzing
