// Block statistics in 64 bits, then the state machine.
#include "reference/exposure.h"

#include <cmath>
#include <cstddef>
#include <cstdlib>

namespace reference {
namespace {

constexpr int kWarmUpFrames = 21;

}  // namespace

BlockComparison CompareBlocks(const std::uint8_t* now, const std::uint8_t* before, int pitch) {
  std::int64_t sumNow = 0, sumBefore = 0, squaresNow = 0, squaresBefore = 0;
  const auto forEachSample = [&](auto&& visit) {
    for (int y = 0; y < 16; ++y) {
      for (int x = 0; x < 16; ++x) visit(now[y * pitch + 2 * x + 1], before[y * pitch + 2 * x + 1]);
    }
  };
  forEachSample([&](std::int64_t c, std::int64_t r) {
    sumNow += c;
    sumBefore += r;
    squaresNow += c * c;
    squaresBefore += r * r;
  });
  std::int64_t covariance = 0;
  forEachSample([&](std::int64_t c, std::int64_t r) { covariance += (r - sumBefore / 256) * (c - sumNow / 256); });

  const std::int64_t varianceNow = squaresNow - ((sumNow * sumNow + 128) >> 8);
  const std::int64_t varianceBefore = squaresBefore - ((sumBefore * sumBefore + 128) >> 8);
  const double deviation = std::sqrt(static_cast<double>(varianceBefore * varianceNow));
  const std::int64_t scale = static_cast<std::int64_t>(deviation) * 65536;
  const auto correlation = static_cast<std::int32_t>(scale != 0 ? covariance * (std::int64_t{1} << 32) / scale : 65536);
  const auto ratio = static_cast<std::uint32_t>(sumBefore * 65536 / (sumNow == 0 ? 1 : sumNow));
  return {correlation, ratio, varianceNow < 3000 && varianceBefore < 3000};
}

bool BlockComparison::Matches() const {
  return meanRatio - 58983u <= 13105u && (correlation >= 52429 || (isFlat && correlation >= 39323));
}

ExposureWatcher::Measure ExposureWatcher::MeasureFrame(const std::uint8_t* frame) const {
  int matching = 0;
  std::uint32_t sum = 0;
  for (int y = 0; y < height - 15; y += 16) {
    for (int x = 0; x < width - 15; x += 16) {
      const std::size_t at =
          (static_cast<std::size_t>(y) * static_cast<std::size_t>(width) + static_cast<std::size_t>(x)) * 2;
      const bool matches = CompareBlocks(frame + at, reference.data() + at, 2 * width).Matches();
      matching += matches;
      sum += (matches ? frame[at + 1] : reference[at + 1]) * 256u;
    }
  }
  return {matching, static_cast<std::int32_t>(sum) / (width * height)};
}

int ExposureWatcher::Watch(const std::uint8_t* frame) {
  int result = -1;
  if (state.frameCount < kWarmUpFrames) {
    if (state.frameCount == 0) Remember(frame);
  } else {
    const Measure measure = MeasureFrame(frame);
    if (state.settling != 0) {
      result = Settle(measure.brightness);
      Remember(frame);
    } else {
      result = WatchDrift(measure.brightness, frame);
    }
    CountSceneChange(measure.matchingBlocks, frame);
    state.currentLevel = measure.brightness;
  }
  ++state.frameCount;
  return result;
}

int ExposureWatcher::Settle(int brightness) {
  if (std::abs(state.candidateLevel - brightness) > 9) {
    state.stableFrames = 0;
    state.settledLevel = 0;
    state.candidateLevel = brightness;
  } else {
    ++state.stableFrames;
    state.settledLevel += brightness;
  }
  if (state.stableFrames <= 7) return -1;
  state.settling = 0;
  state.settledLevel = (state.settledLevel + 4) >> 3;
  state.driftFrames = 0;
  return 0;
}

int ExposureWatcher::WatchDrift(int brightness, const std::uint8_t* frame) {
  state.candidateLevel = brightness;
  if (std::abs(state.settledLevel - brightness) <= 27) {
    if (--state.driftFrames < 0) {
      state.driftFrames = 0;
      return -1;
    }
  } else {
    ++state.driftFrames;
  }
  if (state.driftFrames <= 8) return -1;
  state.settling = 1;
  state.stableFrames = 0;
  state.settledLevel = 0;
  Remember(frame);
  return 1;
}

void ExposureWatcher::CountSceneChange(int matchingBlocks, const std::uint8_t* frame) {
  if (matchingBlocks < width * height / 256 / 5) {
    ++state.sceneChangeFrames;
  } else if (--state.sceneChangeFrames < 0) {
    state.sceneChangeFrames = 0;
  }
  if (state.sceneChangeFrames > 5) {
    state.sceneChangeFrames = 0;
    Remember(frame);
  }
}

void ExposureWatcher::Remember(const std::uint8_t* frame) {
  reference.assign(frame, frame + static_cast<std::ptrdiff_t>(width) * height * 2);
}

}  // namespace reference
