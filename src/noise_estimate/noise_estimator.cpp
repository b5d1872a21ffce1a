#include "noise_estimate/noise_estimator.h"

#include <algorithm>

#include "compiler/compiler.h"

namespace vidproc {
namespace {

/// Pictures with fewer blocks tell nothing.
constexpr std::size_t kFewestBlocks = 16;
/// A camera that is slower than the stream repeats frames: so many in a row are passed over.
constexpr std::int32_t kMostRepeats = 8;
/// Blocks of one value throughout, not above this, are bars beside the picture.
constexpr std::uint8_t kBlack = 16;

constexpr std::int32_t kBlocksAhead = 4;
constexpr std::int32_t kSamples = kNoiseBlockWidth * kNoiseBlockHeight;

bool IsBar(const NoiseBlock& block) {
  return block[0] <= kBlack && std::count(block.begin(), block.end(), block[0]) == kSamples;
}

/// 64^2 times the variance.
constexpr std::int32_t Spread(std::int32_t sum, std::int32_t squares) { return kSamples * squares - sum * sum; }

/// 64^2 times twice the variance of the noise, by the change since the frame before.
std::int32_t ChangeOf(const NoiseBlock& block, const NoiseBlock& previous) {
  std::int32_t changes = 0, squaredChanges = 0, sum = 0, squares = 0;
  for (std::size_t i = 0; i < kSamples; ++i) {
    const int sample = block[i], change = sample - previous[i];
    changes += change;
    squaredChanges += change * change;
    sum += sample;
    squares += sample * sample;
  }
  // Twice what the noise alone would give: a flat block's own variance is no more exact than that of its changes.
  return std::min(Spread(changes, squaredChanges), 4 * Spread(sum, squares));
}

/// The same of a single frame, by the differences of neighbours that no slope makes.
std::int32_t RoughnessOf(const NoiseBlock& block) {
  constexpr std::size_t kWidth = kNoiseBlockWidth;
  std::int64_t squares = 0, count = 0;
  for (std::size_t i = 0; i + kWidth + 1 < kSamples; ++i) {
    if (i % kWidth == kWidth - 1) continue;
    const int difference = block[i] - block[i + 1] - block[i + kWidth] + block[i + kWidth + 1];
    squares += difference * difference;
    ++count;
  }
  return static_cast<std::int32_t>(squares * (kSamples * kSamples / 2) / count);
}

/// The value of this rank, 0 the smallest; reorders them.
std::int32_t Ranked(std::int32_t* values, std::size_t count, std::size_t rank) {
  std::nth_element(values, values + rank, values + count);
  return values[rank];
}

std::int32_t SquareRoot(std::int64_t value) {
  std::int64_t root = 0;
  for (std::int64_t bit = std::int64_t{1} << 15; bit > 0; bit >>= 1) {
    if ((root + bit) * (root + bit) <= value) root += bit;
  }
  return static_cast<std::int32_t>(root);
}

/// From 64^2 times twice the variance to hundredths of the deviation. Of 64 samples, 63 are free, and the lower
/// quartile of such variances lies at 0.875 of their mean.
std::int32_t DeviationOf(std::int32_t figure) {
  constexpr std::int64_t kHundredthsSquared = 10000;
  constexpr std::int64_t kDivisor = 2 * 64 * 63 * 7 / 8;
  return SquareRoot(figure * kHundredthsSquared / kDivisor);
}

}  // namespace

NoiseEstimator::NoiseEstimator(std::int32_t width, std::int32_t height)
    : columns(std::min(width / kNoiseBlockWidth, kColumns)), rows(std::min(height / kNoiseBlockHeight, kRows)) {
  for (std::int32_t b = 0; b < columns * rows; ++b) {
    const std::int32_t column = b % columns, row = b / columns;
    places[static_cast<std::size_t>(b)] = {(2 * column + 1) * width / (2 * columns) - kNoiseBlockWidth / 2,
                                           (2 * row + 1) * height / (2 * rows) - kNoiseBlockHeight / 2};
  }
}

void NoiseEstimator::Forget() {
  next = frames = 0;
  repeats = deviation = 0;
  hasPrevious = false;
}

const std::uint8_t* NoiseEstimator::Samples(const LumaRows& frame, std::int32_t block) const {
  const Place place = places[static_cast<std::size_t>(block)];
  return frame.first + place.y * frame.stride + place.x * frame.sampleStep;
}

template <int kStep>
NoiseBlock NoiseEstimator::Read(const std::uint8_t* samples, std::ptrdiff_t stride) {
  NoiseBlock block;
  for (std::size_t row = 0; row < kNoiseBlockHeight; ++row, samples += stride) {
    for (std::size_t i = 0; i < kNoiseBlockWidth; ++i) block[row * kNoiseBlockWidth + i] = samples[i * kStep];
  }
  return block;
}

void NoiseEstimator::PrefetchBlock(const std::uint8_t* samples, std::ptrdiff_t stride) {
  for (std::int32_t row = 0; row < kNoiseBlockHeight; ++row) Prefetch(samples + row * stride);
}

void NoiseEstimator::Measure(const LumaRows& frame) {
  const std::int32_t blocks = columns * rows;
  std::array<std::int32_t, kColumns * kRows> found;
  std::size_t count = 0;
  bool isRepeat = hasPrevious;
  for (std::int32_t b = 0; b < blocks; ++b) {
    PrefetchBlock(Samples(frame, std::min(b + kBlocksAhead, blocks - 1)), frame.stride);
    const std::uint8_t* const samples = Samples(frame, b);
    const NoiseBlock block = frame.sampleStep == 1 ? Read<1>(samples, frame.stride) : Read<2>(samples, frame.stride);
    NoiseBlock& before = previous[static_cast<std::size_t>(b)];
    isRepeat = isRepeat && block == before;
    if (!IsBar(block)) {
      found[count++] = hasPrevious ? ChangeOf(block, before) : RoughnessOf(block);
    }
    before = block;
  }
  repeats = isRepeat ? std::min(repeats + 1, kMostRepeats + 1) : 0;
  if (count < kFewestBlocks || (isRepeat && repeats <= kMostRepeats)) return;
  const std::int32_t figure = Ranked(found.data(), count, count / 4);
  if (hasPrevious) return Add(figure);
  // The first frame's own figure serves until there are changes to be seen.
  deviation = DeviationOf(figure);
  hasPrevious = true;
}

void NoiseEstimator::Add(std::int32_t figure) {
  figures[next] = figure;
  next = (next + 1) % kFrames;
  frames = std::min(frames + 1, kFrames);
  auto sorted = figures;
  deviation = DeviationOf(Ranked(sorted.data(), frames, frames / 2));
}

}  // namespace vidproc
