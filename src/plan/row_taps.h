// The taps of a phase in the order and form in which the row kernels take them.
#pragma once

#include <cstdint>

#include "kernels/row_jobs.h"

namespace vidproc {

/// Arranges the taps of a phase that are not zero so that products of bytes add up in 16-bit lanes: those of all pairs
/// but the last, and those of the last by themselves. A tap beyond signed bytes stands twice, with half of it each.
/// @param coefficients  of one phase, `taps` of them: up to kMaxTaps
/// @return whether that is possible with kMaxVerticalTaps; `plan` is then count, row and coefficient
bool PairTapsOfPhase(const std::int16_t* coefficients, std::int32_t taps, VerticalTaps& plan);

/// @param coefficients  of one phase, `taps` of them: 4, 8 or 16, at most kMaxVerticalTaps not zero
/// @param shape         of the kernels that the taps are for; {}: the general form only
VerticalTaps PlanVerticalTaps(const std::int16_t* coefficients, std::int32_t taps, const ByteRowShape& shape);

/// The taps of phase 0 of an edge-preserving bank; none of them is negative, and they add up to 128.
/// @param edge  1..8, how fast a tap loses weight as its sample differs from the centre
DenoiseTaps PlanDenoiseTaps(const std::int16_t* coefficients, std::int32_t taps, std::int32_t edge);

/// @param strength  0..127, share of a history that equals the new value, in 128ths
/// @param shift     0..8, how fast the share falls with the difference
HistoryBlend PlanHistoryBlend(std::int32_t strength, std::int32_t shift);

}  // namespace vidproc
