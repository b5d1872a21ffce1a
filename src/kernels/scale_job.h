// What one run of a scaling kernel works on, as plain data: frames, ratios, banks, settings, history and the strip's
// own memory. Prepared once per frame by the common code, read by the kernels of every instruction set.
#pragma once

#include <cstddef>
#include <cstdint>

#include "kernels/form.h"

namespace vidproc {

struct NoiseField;
struct ByteRowPlan;

constexpr int kPhases = 16;
constexpr int kMaxTaps = 16;

/// Kernels read at least this much of a source row, one step of the widest vectors: shorter rows are copied first.
constexpr int kMinRowBytes = 128;

/// Rows of working buffers keep this many bytes of room past their end, so that vectors may overshoot; the odd multiple
/// of a cache line also keeps rows whose length is a power of two apart in the cache.
constexpr int kRowSlack = 192;

/// Byte columns repeated on each side of a strip's columns: whole groups Cb Y Cr Y, as many as 16 taps can reach. The
/// last Cr of an odd width lies past the row's end, so that its taps reach one group further.
constexpr int kEdgeColumns = 36;

/// Rows of the widest strip: one 512-bit vector of bytes.
constexpr int kMaxStripRows = 64;

/// The coefficients of an axis as the kernels read them, and where each phase's non-zero ones lie.
struct TapBank {
  std::int32_t taps;
  std::uint32_t usedPhases;  ///< bit p: some output has phase p
  std::int16_t coefficient[kPhases][kMaxTaps];
  std::int32_t firstTap[kPhases];
  std::int32_t tapCount[kPhases];  ///< from the first to the last non-zero tap; at least 1
};

/// An output sample of a component and the source sample under its centre tap.
struct TapPosition {
  std::int32_t output;
  std::int32_t source;
};

/// Where an output sample, or row, lies in the source.
struct PhasePosition {
  std::int32_t source;  ///< sample under the centre tap; in a HorizontalRowPlan under the first one
  std::int32_t phase;   ///< 0..15, sixteenths after it
};

/// Outputs that share a phase: `count` of the positions from number `first` on, in ascending order.
struct PhaseRun {
  std::int32_t phase;
  std::int32_t first;
  std::int32_t count;
};

/// The outputs of a row of luma, or of Cb and of Cr, sorted by phase.
struct ColumnPlan {
  const TapPosition* positions;
  PhaseRun runs[kPhases];
  std::int32_t runCount;
};

/// The strip's working memory, for kMaxStripRows / 2 rows of 16-bit values or kMaxStripRows rows of bytes.
struct StripMemory {
  std::int16_t* rows;                   ///< vertical result, rows rowPitch values apart
  std::int16_t* columns;                ///< the same transposed, 2 * kEdgeColumns more columns
  std::uint8_t* outColumns;             ///< horizontal result, one column of strip rows per output byte
  std::uint8_t* outRows;                ///< finished rows, packed, on their way to a padded destination
  std::int16_t* previousVerticalPiece;  ///< a short strip's part of the previous vertical result
  std::ptrdiff_t rowPitch;              ///< in values
};

/// A 4:2:0 source that the byte row scaler reads as it is; one chroma row serves two luma rows.
struct SourcePlanes {
  const std::uint8_t* luma;
  const std::uint8_t* chroma;
  std::ptrdiff_t lumaStride;
  std::ptrdiff_t chromaStride;
};

/// Shifts from here on push the whole weight curve out of 16 bits: taps lose no weight by any difference.
constexpr std::int32_t kClearingShift = 16;

struct ScaleJob {
  const std::uint8_t* source;
  std::ptrdiff_t sourceStride;
  const SourcePlanes* planes;  ///< stands for `source` in the byte row scaler; null: the source is a 2vuy frame
  std::int32_t inWidth;
  std::int32_t inHeight;
  std::uint8_t* destination;
  std::ptrdiff_t destinationStride;
  std::int32_t outWidth;
  std::int32_t outHeight;

  const PhasePosition* rowPositions;  ///< one per output row
  const TapBank* verticalBank;
  const TapBank* horizontalBank;
  const ColumnPlan* lumaColumns;
  const ColumnPlan* chromaColumns;

  Form form;
  const ByteRowPlan* byteRowPlan;  ///< for the proven form of the scalers whose taps weigh the same everywhere

  std::int32_t adaptiveShift;  ///< left shift of the spatial weight curve; from kClearingShift on it is 0
  std::int16_t temporalStrength;
  std::int32_t temporalShift;
  bool firstFrame;
  std::uint8_t* history;  ///< previous output, transposed: byte column j of row r at j * outHeight + r
  std::int16_t lumaGain;
  std::int16_t lumaOffset;
  const std::uint8_t* previousInput;  ///< null where the kernel has no motion test
  std::ptrdiff_t previousInputStride;
  std::int16_t* previousVertical;  ///< previous vertical result, transposed

  NoiseField* noise;  ///< null: none
  StripMemory strip;
};

}  // namespace vidproc
