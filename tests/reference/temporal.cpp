// The frame is walked as 2 * width segments of `height` bytes each, not as rows.
#include "reference/temporal.h"

#include <algorithm>
#include <cstdlib>
#include <vector>

#include "reference/lane.h"

namespace reference {
namespace {

void FilterSegments(const TemporalSettings& settings, const std::uint8_t* source, const std::uint8_t* history,
                    std::uint8_t* result) {
  const std::size_t segments = 2 * settings.width;
  const std::size_t length = settings.height;
  const auto change = [&](std::size_t at) { return std::abs(history[at] - source[at]); };
  for (std::size_t i = 0; i < segments; ++i) {
    const std::size_t up = i == 0 ? 0 : i - 1;
    const std::size_t down = std::min(i + 1, segments - 1);
    for (std::size_t j = 0; j < length / 16 * 16; ++j) {  // kept: the last length mod 16 bytes stay unwritten
      const std::size_t at = i * length + j;
      const int own = change(at);
      const int neighbours = (change(up * length + j) + change(down * length + j) + 1) >> 1;
      const int measure = std::max((neighbours + own + 1) >> 1, own);
      const int weight = HistoryWeight(CappedSquare(measure), settings.shift, settings.strength);
      result[at] = Blend(source[at], history[at], weight);
    }
  }
}

}  // namespace

void RunTemporal(const TemporalSettings& settings, StreamState& state, const std::uint8_t* source,
                 std::uint8_t* destination) {
  const std::size_t rowBytes = 2 * settings.width;
  const std::size_t bytes = rowBytes * settings.height;
  const bool packed = settings.outStride == rowBytes;
  std::uint8_t* history = GrowTo(state.history, bytes);
  std::uint8_t* result = packed ? destination : GrowTo(state.staging, bytes);
  const std::vector<std::uint8_t> whole(source, source + bytes);
  if (state.firstFrame) {
    std::copy(whole.begin(), whole.end(), history);
    if (packed) std::copy(whole.begin(), whole.end(), result);
  } else {
    FilterSegments(settings, source == result ? source : whole.data(), history, result);
    std::copy_n(result, bytes, history);
  }
  if (!packed) {  // kept: on a first frame these rows are what the staging memory held, not the source
    for (std::size_t y = 0; y < settings.height; ++y) {
      std::copy_n(result + y * rowBytes, rowBytes, destination + y * settings.outStride);
    }
  }
  state.firstFrame = false;
}

}  // namespace reference
