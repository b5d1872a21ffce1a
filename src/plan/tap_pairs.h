// The taps of a horizontal bank in pairs, as the forms of the row kernels take them that multiply bytes two at a time.
#pragma once

#include <cstdint>

#include "kernels/row_jobs.h"

namespace vidproc {

struct TapPairs {
  std::int32_t count = 0;
  std::int32_t tap[kMaxRowTapPairs];  ///< the first tap of each pair; the next one is the second
  std::int16_t coefficient[kPhases][2 * kMaxRowTapPairs] = {};

  /// Whether sums are exact in the used phases: all pairs but the last add up in 16 bits, and so does the last.
  bool AreExact(std::uint32_t usedPhases) const;
};

/// Pairs up the taps that some used phase weighs so that sums are exact, where that is possible: from the
/// first of them on, or from the tap before it, so that large neighbours part; or with the middle ones halved between
/// pairs.
/// @param bank  kMaxTaps coefficients of each phase
TapPairs PairTaps(const std::int16_t* bank, std::int32_t taps, std::uint32_t usedPhases);

}  // namespace vidproc
