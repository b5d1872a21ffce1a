// What the row kernels work on, as plain data: one row of one plane at a time, of single samples (luma; Cb or Cr by
// itself) or of interleaved Cb Cr pairs. Taps and plans are made once per configuration by src/plan.
//
// Working rows have kRowMargin bytes on both sides that may be read, whatever they hold; where a horizontal kernel
// filters, repeatEdges has filled the nearest kRowEdge of them. Rows of state have kRowSlack bytes after them that may
// be read and written. All other rows are read and written from their first byte to their last and no further. Rows
// need no alignment.
#pragma once

#include <cstdint>

#include "kernels/byte_row_plan.h"
#include "kernels/denoise_taps.h"
#include "kernels/scale_job.h"

namespace vidproc {

constexpr int kRowMargin = 128;
constexpr int kRowEdge = 32;
constexpr int kMaxVerticalTaps = 8;

/// One phase of a vertical bank. Rows without weight are left out.
struct VerticalTaps {
  std::int32_t count;  ///< 1 to kMaxVerticalTaps
  bool inBytes;        ///< products of neighbouring pairs add up in 16 bits, saturating at the last pair only
  std::int32_t row[kMaxVerticalTaps];  ///< counted from the row under the centre tap; a row may stand twice
  std::int16_t coefficient[kMaxVerticalTaps];
};

/// out = clamp((sum of coefficient * row + half) >> shift). Rows shorter than kMinRowBytes may be read up to there.
struct VerticalRowJob {
  const VerticalTaps* taps;
  const std::uint8_t* rows[kMaxVerticalTaps];  ///< one per tap, in the order of the taps; none overlaps `out`
  const std::uint8_t* ahead[2];                ///< rows of as many bytes to prefetch for the next call; may be null
  std::int32_t shift;                          ///< 6 or 7
  std::int32_t bytes;
  std::uint8_t* out;
};

constexpr int kMaxRowTapPairs = 10;

enum class HorizontalForm : std::uint8_t {
  kGeneral,        ///< output by output, for every bank
  kSamePhase,      ///< every output one sample after the one before: a vertical pass over shifted copies of the row
  kWholeWindows,   ///< in vectors, whose windows, one or two, hold all samples of their results
  kPatterns,       ///< in vectors, by the windows and patterns of byte_row_plan.h
  kOnePattern,     ///< the same pattern for all vectors
  kAdjacentPairs,  ///< the same, of single samples at 2:1: vectors of the row hold the pairs as they are
  kOctets,         ///< eight taps of a result side by side, for ratios beyond the reach of patterns
};

/// How a row is scaled horizontally. HorizontalRowLayout makes it and holds what it points to.
struct HorizontalRowPlan {
  HorizontalForm form;
  std::int32_t outputs;  ///< samples, or pairs
  std::int32_t step;     ///< bytes from a sample to the next: 1, or 2 for pairs
  std::int32_t shift;

  // kGeneral
  std::int32_t taps;
  const PhasePosition* positions;    ///< of every output: the sample under the first tap, the phase
  const std::int16_t* coefficients;  ///< kMaxTaps of each phase

  VerticalTaps shifted;  ///< kSamePhase: `row` counts samples from the output's own

  // The forms by pairs of taps. Sums of products stay in 16 bits until the last pair is added. Patterns of whole
  // windows have shuffle indices and coefficients for each pair, so that taps pair as they like; the first half of the
  // pairs is gathered from the windows, the others secondWindow bytes further.
  std::int32_t pairs;
  std::int32_t pairOffset[kMaxRowTapPairs];  ///< bytes from a result's first tap to each pair; not for whole windows
  std::int32_t secondWindow;

  // kOctets. Tiles of 16 bytes hold two results; four vectors of them make one of sums. Each of the four has a window
  // per tile, and in the pattern its shuffle indices and the coefficients of each octet.
  std::int32_t octets;  ///< 1 or 2

  ByteRowGrid grid;  ///< for as many whole vectors of bytes as the outputs fill
  ByteRowGrid end;   ///< for the rest: two vectors of results
};

/// Writes outputs * step bytes; `in` is a working row.
struct HorizontalRowJob {
  const HorizontalRowPlan* plan;
  const std::uint8_t* in;
  std::uint8_t* out;
};

/// The share of the history, in 128ths, by its difference from the new value.
struct HistoryBlend {
  alignas(16) std::uint8_t table[16];  ///< below 16
  std::uint8_t weightFrom16;
  HistorySteps steps;  ///< where that is 0
};

/// Where the centre moves against the previous frame, taps keep their whole weight: `previous` holds the previous
/// frame's centres, and this row's afterwards; null: no motion smoothing.
struct VerticalDenoiseJob {
  const DenoiseTaps* taps;
  const std::uint8_t* centre;
  const std::uint8_t* rows[kMaxVerticalTaps];  ///< taps->count of them, in the order of the taps
  const std::uint8_t* ahead[2];                ///< as in VerticalRowJob
  std::uint8_t* previous;                      ///< a row of state
  std::int32_t bytes;
  std::uint8_t* out;  ///< overlaps none of the rows
};

/// Filters a working row and blends the result with the history.
struct HorizontalDenoiseJob {
  const DenoiseTaps* taps;
  const std::uint8_t* in;     ///< a working row
  std::uint8_t* previous;     ///< as above, of the vertical results
  const HistoryBlend* blend;  ///< null: the history is replaced
  std::uint8_t* history;      ///< receives the result; a row of state; null: none is kept
  std::int32_t step;
  std::int32_t bytes;
  std::uint8_t* out;  ///< null: the result is wanted in the history only
};

}  // namespace vidproc
