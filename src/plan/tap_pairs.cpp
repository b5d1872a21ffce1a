#include "plan/tap_pairs.h"

#include <algorithm>
#include <utility>

#include "plan/exactness.h"
#include "plan/phase_position.h"

namespace vidproc {
namespace {

/// First and last tap that some used phase weighs.
struct TapSpan {
  int first;
  int last;
};

TapSpan FindSpan(const std::int16_t* bank, int taps, std::uint32_t usedPhases) {
  const auto isZero = [&](int tap) {
    for (int phase = 0; phase < kPhases; ++phase) {
      if (HasPhase(usedPhases, phase) && bank[phase * kMaxTaps + tap] != 0) return false;
    }
    return true;
  };
  TapSpan span{0, taps - 1};
  while (span.first < span.last && isZero(span.first)) ++span.first;
  while (span.last > span.first && isZero(span.last)) --span.last;
  return span;
}

/// Pairs from tap `first` on, which may be one before the span, and `halved` again by itself: the pair of taps whose
/// positive coefficients are halved between it and the others; none where it is negative.
TapPairs PairFrom(const std::int16_t* bank, const TapSpan& span, int first, int halved) {
  TapPairs pairs;
  for (int tap = first; tap <= span.last; tap += 2) pairs.tap[pairs.count++] = tap;
  if (halved >= 0) pairs.tap[pairs.count++] = halved;
  for (int phase = 0; phase < kPhases; ++phase) {
    for (int tap = span.first; tap <= span.last; ++tap) {
      const std::int16_t coefficient = bank[phase * kMaxTaps + tap];
      const bool isHalved = halved >= 0 && (tap == halved || tap == halved + 1) && coefficient > 0;
      const auto half = static_cast<std::int16_t>(isHalved ? coefficient / 2 : 0);
      pairs.coefficient[phase][tap - first] = static_cast<std::int16_t>(coefficient - half);
      if (isHalved) pairs.coefficient[phase][2 * (pairs.count - 1) + tap - halved] = half;
    }
  }
  return pairs;
}

void ExchangePairs(TapPairs& pairs, int a, int b) {
  std::swap(pairs.tap[a], pairs.tap[b]);
  for (auto& row : pairs.coefficient) std::swap_ranges(row + 2 * a, row + 2 * a + 2, row + 2 * b);
}

}  // namespace

bool TapPairs::AreExact(std::uint32_t usedPhases) const {
  const int others = 2 * (count - 1);
  for (int phase = 0; phase < kPhases; ++phase) {
    const std::int16_t* const row = coefficient[phase];
    if (!HasPhase(usedPhases, phase)) continue;
    if (!ByteProductsFitWords(row, others) || !ByteProductsFitWords(row + others, 2)) return false;
  }
  return true;
}

TapPairs PairTaps(const std::int16_t* bank, std::int32_t taps, std::uint32_t usedPhases) {
  const TapSpan span = FindSpan(bank, taps, usedPhases);
  const int middle = taps / 2 - 1;
  TapPairs pairs;
  for (const int halved : {-1, middle}) {
    for (const int first : {span.first, span.first - 1}) {
      pairs = PairFrom(bank, span, first, halved);
      for (int last = 0; last < pairs.count; ++last) {
        TapPairs arranged = pairs;
        ExchangePairs(arranged, last, pairs.count - 1);
        if (arranged.AreExact(usedPhases)) return arranged;
      }
    }
  }
  return pairs;
}

}  // namespace vidproc
