// The proofs that a kernel's faster form gives the same bytes as its general one, and the choice between the two.
// General forms work in 16-bit lanes whose additions saturate; the others in bytes, or with fewer products. Every bound
// below is the last value that passes; tests/plan/exactness_test.cpp runs both forms on it and on the value after it.
#pragma once

#include <cstdint>

#include "kernels/form.h"
#include "kernels/scale_job.h"

namespace vidproc {

// --- Banks, in their used phases ---

/// Byte rows: vertical results are bytes, and horizontal sums stay inside 16 bits in any order.
bool ByteRowsAreExact(const TapBank& vertical, const TapBank& horizontal, std::int32_t precisionBits);

/// Byte columns of the adaptive scalers, banks of 7 bits: outer taps are bytes, none negative, that leave the centre
/// tap at least 0 of 128.
bool ByteColumnsAreExact(const TapBank& vertical, const TapBank& horizontal);

/// Row kernels: `count` signed byte taps whose sums of bytes stay inside 16 bits in any order, before rounding:
/// positive ones of at most 128, negative ones of at least -128.
bool ByteProductsFitWords(const std::int16_t* coefficients, int count);

/// Adaptive taps that lose no weight, banks of 7 bits, weigh their coefficients: outer ones are signed bytes, and the
/// centre tap is what they leave of 128, which it gets whatever the bank says.
bool WeightsAreCoefficients(const TapBank& vertical, const TapBank& horizontal);

// --- Settings ---

/// Tap weights in bytes: shifts of the difference weight curve of 0 to 7, that is `adaptive` 1 to 8. From 8 on large
/// differences regain their weight, in 16-bit lanes only.
bool AdaptiveCurveFitsBytes(std::int32_t adaptive);

/// History blends in bytes: strengths to 127, and shifts to 7 for the same reason.
bool BlendFitsBytes(std::int32_t strength, std::int32_t shift);

/// Weights of the temporal filter from a table of bytes: strengths to 127, for which no sum saturates; any shift.
bool TemporalTableIsExact(std::int32_t strength);

/// Deblocking taps added up in pairs: symmetric about tap 3, none negative, at most 128 in all six outer ones. All
/// weights are then at least 0, so that a saturated sum of bytes does not depend on its order.
bool SymmetricSumsAreExact(const std::int16_t (&taps)[8]);

// --- The choice ---

/// @param isExact    by the proofs above
/// @param levelHasIt  whether the level in use has the faster form
Form ChooseForm(bool isExact, bool levelHasIt);

}  // namespace vidproc
