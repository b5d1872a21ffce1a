// The public fields of the processor object, and how a fuzzer writes each of them.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <type_traits>

#include "input.h"
#include "vidproc/video_processor.h"

namespace fuzzing {

template <auto kField>
void WriteNumber(VideoProcessor& p, Input& input) {
  p.*kField = static_cast<std::remove_reference_t<decltype(p.*kField)>>(input.Any());
}

/// Groups of eight equal values: what lanes hold.
template <auto kField>
void WriteCoefficients(VideoProcessor& p, Input& input) {
  auto* const values = reinterpret_cast<std::int16_t*>(&(p.*kField));
  const int kind = input.Between(0, 2);
  std::uint32_t state = input.Word();
  std::int16_t value = 0;
  for (std::size_t i = 0; i < sizeof(p.*kField) / sizeof(std::int16_t); ++i) {
    if (i % 8 == 0) {
      state = state * 1664525 + 1013904223;
      const std::uint32_t drawn = state >> 16;
      value = static_cast<std::int16_t>(kind == 0 ? drawn % 320 - 160 : kind == 1 ? (drawn % 4 == 0 ? 128 : 0) : drawn);
    }
    values[i] = value;
  }
  std::fill(std::begin(p.lumaOffset), std::end(p.lumaOffset), p.lumaOffset[0]);
}

using Object = VideoProcessor;
inline constexpr void (*kWriteField[])(VideoProcessor&, Input&) = {
    WriteNumber<&Object::cpuLevel>,
    WriteNumber<&Object::spatialMotionSmoothing>,
    WriteNumber<&Object::temporalShift>,
    WriteNumber<&Object::temporalStrength>,
    WriteNumber<&Object::temporalFirstFrame>,
    WriteNumber<&Object::deblockLevel>,
    WriteNumber<&Object::use16Taps>,
    WriteNumber<&Object::adaptive>,
    WriteNumber<&Object::softenLevel>,
    WriteNumber<&Object::ditherLevel>,
    WriteNumber<&Object::horizontalUp>,
    WriteNumber<&Object::horizontalDown>,
    WriteNumber<&Object::verticalUp>,
    WriteNumber<&Object::verticalDown>,
    WriteNumber<&Object::inStride>,
    WriteNumber<&Object::outStride>,
    WriteNumber<&Object::filtersReady>,
    WriteNumber<&Object::enhanceHorizontal>,
    WriteNumber<&Object::enhanceVertical>,
    WriteNumber<&Object::inWidth>,
    WriteNumber<&Object::inHeight>,
    WriteNumber<&Object::outWidth>,
    WriteNumber<&Object::outHeight>,
    WriteNumber<&Object::lanczosLobes>,
    WriteNumber<&Object::enhanceType>,
    WriteNumber<&Object::enhanceStrength>,
    WriteNumber<&Object::isPreProcessor>,
    WriteNumber<&Object::ditherSeed>,
    WriteNumber<&Object::deblockTestPattern>,
    [](VideoProcessor& p, Input& input) { p.windowKind = input.Byte() % 3; },
    WriteCoefficients<&Object::lumaGain>,
    WriteCoefficients<&Object::lumaGainInverse>,
    WriteCoefficients<&Object::lumaOffset>,
    WriteCoefficients<&Object::horizontalFilter>,
    WriteCoefficients<&Object::verticalFilter>,
    WriteCoefficients<&Object::enhanceKernel>,
    WriteCoefficients<&Object::horizontalFilterLanes>,
    WriteCoefficients<&Object::verticalFilterLanes>,
    WriteCoefficients<&Object::deblockHorizontalFilterLanes>,
    WriteCoefficients<&Object::deblockVerticalFilterLanes>};

}  // namespace fuzzing
