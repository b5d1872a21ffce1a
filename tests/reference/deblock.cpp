// Vertical results of the whole frame first, then every output sample. A sample in the middle of its block (positions
// 3 and 4) stays as it is; the others are filtered the more, the smaller the step across the nearest block edge.
#include "reference/deblock.h"

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <vector>

#include "reference/borders.h"
#include "reference/lane.h"

namespace reference {
namespace {

void PaintTestPattern(int rowBytes, int rows, std::uint8_t* frame) {
  for (int r = 0; r < rows; ++r) {
    for (int x = 0; x < rowBytes; ++x) {
      const bool bright = ((x >> 5) & 1) == ((r >> 4) & 1);
      *frame++ = x % 2 == 0 ? 128 : bright ? 215 : 205;
    }
  }
}

bool IsCentral(int positionInBlock) { return positionInBlock == 3 || positionInBlock == 4; }

/// The tap just before the block edge that is nearest to the centre, tap 3.
int TapBeforeEdge(int positionInBlock) { return positionInBlock < 3 ? 2 - positionInBlock : 3 + 7 - positionInBlock; }

/// Weights of the eight taps: the bank's where the step across the edge is 0, the identity where it is large.
void WeighTaps(const std::int16_t* bank, int step, int level, int* weights) {
  const int sensitivity = (51 - level) >> 2;
  const int edge = LowWord(std::abs(MultiplyLow(step, sensitivity)));
  const int edgeWeight = 256 - std::min(edge, 256);
  int others = 0;
  for (int t = 0; t < 8; ++t) {
    if (t == 3) continue;
    const int weight = MultiplyLow(bank[t], edgeWeight);
    weights[t] = Wrap16(weight + 128) >> 8;
    others += weight;
  }
  weights[3] = std::min(LowWord(LowWord(32768 - others) + 128), 32768) >> 8;
}

/// `twoSums` adds taps 0-3 apart from taps 4-7.
int Filter(const DeblockSettings& settings, const std::int16_t* bank, const int* samples, int position, bool twoSums) {
  if (IsCentral(position)) return samples[3];
  const int before = TapBeforeEdge(position);
  int weights[8];
  WeighTaps(bank, SubtractSaturated(samples[before], samples[before + 1]), settings.level, weights);
  int sums[2] = {0, 0};
  for (int t = 0; t < 8; ++t) {
    int& sum = sums[twoSums && t > 3];
    sum = AddSaturated(sum, MultiplyLow(weights[t], samples[t]));
  }
  return AddSaturated(AddSaturated(sums[0], sums[1]), 64) >> 7;
}

}  // namespace

void Deblock(const DeblockSettings& settings, std::uint8_t* frame) {
  const int rowBytes = 2 * settings.width;
  if (settings.testPattern) PaintTestPattern(rowBytes, settings.height, frame);

  std::vector<std::int16_t> plane(static_cast<std::size_t>(rowBytes) * static_cast<std::size_t>(settings.height));
  for (int y = 0; y < settings.height; ++y) {
    for (int x = 0; x < rowBytes; ++x) {
      int samples[8];
      for (int t = 0; t < 8; ++t) samples[t] = frame[std::clamp(y - 3 + t, 0, settings.height - 1) * rowBytes + x];
      plane.data()[y * rowBytes + x] =
          static_cast<std::int16_t>(Filter(settings, settings.vertical, samples, y % 8, false));
    }
  }

  for (int j = 0; j < rowBytes; ++j) {
    const int step = j % 2 == 1 ? 2 : 4;  // luma, chroma
    const int first = j % 2 == 1 ? 1 : j % 4;
    const int m = (j - first) / step;
    const int centre = static_cast<int>(std::int64_t{m} * settings.horizontalDown / settings.horizontalUp);
    int columns[8];
    for (int t = 0; t < 8; ++t) columns[t] = FoldColumn(first + step * (centre - 3 + t), rowBytes);
    for (int y = 0; y < settings.height; ++y) {
      int samples[8];
      for (int t = 0; t < 8; ++t) samples[t] = plane.data()[y * rowBytes + columns[t]];
      frame[y * rowBytes + j] = ClampToByte(Filter(settings, settings.horizontal, samples, m % 8, true));
    }
  }
}

}  // namespace reference
