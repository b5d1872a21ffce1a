// The kernels of one instruction set, and the choice of the set: made once, at run time, for the whole process.
#pragma once

#include <cstddef>
#include <cstdint>

#include "kernels/byte_row_plan.h"

namespace vidproc {

struct ScaleJob;
struct DeblockJob;
struct TemporalJob;
struct NoiseField;
struct BlockRow;
struct BlockComparisons;
struct BlockTotals;
struct VerticalRowJob;
struct HorizontalRowJob;
struct VerticalDenoiseJob;
struct HorizontalDenoiseJob;

/// A level's entry points. The structures that they read and write are defined beside the kernels.
struct KernelTable {
  ByteRowShape byteRowShape;
  void (*plainScale)(const ScaleJob&);
  void (*plainScaleWithLumaShift)(const ScaleJob&);
  void (*adaptiveScale)(const ScaleJob&);
  void (*motionSmoothingScale)(const ScaleJob&);
  void (*adaptive16TapScale)(const ScaleJob&);
  void (*postScale)(const ScaleJob&);
  void (*deblock)(const DeblockJob&);
  void (*temporalFilter)(const TemporalJob&);
  /// Adds noise to bytes first..end - 1 of one noise row; the first of them lies at `bytes`. `noise` is the row's line
  /// in the first patch row of NoiseField::noise, to which the positions of its blocks are added.
  void (*addNoiseToRow)(const signed char* noise, const std::uint16_t* blockPosition, std::uint8_t* bytes,
                        std::uint32_t first, std::uint32_t end);
  /// Adds the noise to bytes offset.. of the linear frame, which lie at `bytes`; those outside the noise's rows stay as
  /// they are. Pieces come in ascending, adjoining order, because the positions of a band are drawn when it is reached.
  void (*addNoise)(NoiseField& field, std::uint8_t* bytes, std::uint64_t offset, std::uint64_t count);
  /// Interleaves two rows into one of `bytes` bytes (even), `chroma` at the even places, and back: luma and Cb Cr pairs
  /// with 2vuy rows or, as Cr and Cb, two planes with rows of pairs.
  void (*interleaveRow)(const std::uint8_t* luma, const std::uint8_t* chroma, std::uint8_t* row, std::ptrdiff_t bytes);
  void (*splitRow)(const std::uint8_t* row, std::uint8_t* luma, std::uint8_t* chroma, std::ptrdiff_t bytes);
  /// The row kernels, see row_jobs.h.
  void (*filterRowsVertically)(const VerticalRowJob& job);
  void (*scaleRow)(const HorizontalRowJob& job);
  void (*denoiseRowVertically)(const VerticalDenoiseJob& job);
  void (*denoiseRowHorizontally)(const HorizontalDenoiseJob& job);
  /// Repeats the first and last `step` bytes (1 or 2) of a working row outwards.
  void (*repeatEdges)(std::uint8_t* row, std::int32_t bytes, std::int32_t step);
  /// (luma - offset) * gain in 64ths, in 16-bit lanes, clamped to bytes; `out` may be `luma`.
  void (*shiftLumaRow)(const std::uint8_t* luma, std::int32_t bytes, std::int16_t gain, std::int16_t offset,
                       std::uint8_t* out);
  /// As addNoiseToRow, to a row of luma samples. `noise` is the row's line in a tile of kNoiseTileSize bytes a row.
  void (*addNoiseToLumaRow)(const signed char* noise, const std::uint16_t* blockPosition, std::uint8_t* luma,
                            std::int32_t bytes);
  /// Makes the blocks of a frame the reference, and compares those of later frames with it.
  void (*rememberBlocks)(const BlockRow& row);
  void (*measureBlocks)(const BlockRow& row, const BlockComparisons& results, BlockTotals& totals);
};

/// The kernels of the level in use.
const KernelTable& Kernels();

}  // namespace vidproc

#ifdef VIDPROC_TARGET
namespace vidproc::VIDPROC_TARGET {

void PlainScale(const ScaleJob& job);
void PlainScaleWithLumaShift(const ScaleJob& job);
void AdaptiveScale(const ScaleJob& job);
void MotionSmoothingScale(const ScaleJob& job);
void Adaptive16TapScale(const ScaleJob& job);
void PostScale(const ScaleJob& job);
void Deblock(const DeblockJob& job);
void TemporalFilter(const TemporalJob& job);
void AddNoiseToRow(const signed char* noise, const std::uint16_t* blockPosition, std::uint8_t* bytes,
                   std::uint32_t first, std::uint32_t end);
void AddNoise(NoiseField& field, std::uint8_t* bytes, std::uint64_t offset, std::uint64_t count);
void InterleaveRow(const std::uint8_t* luma, const std::uint8_t* chroma, std::uint8_t* row, std::ptrdiff_t bytes);
void SplitRow(const std::uint8_t* row, std::uint8_t* luma, std::uint8_t* chroma, std::ptrdiff_t bytes);
void FilterRowsVertically(const VerticalRowJob& job);
void ScaleRow(const HorizontalRowJob& job);
void DenoiseRowVertically(const VerticalDenoiseJob& job);
void DenoiseRowHorizontally(const HorizontalDenoiseJob& job);
void RepeatRowEdges(std::uint8_t* row, std::int32_t bytes, std::int32_t step);
void ShiftLumaRow(const std::uint8_t* luma, std::int32_t bytes, std::int16_t gain, std::int16_t offset,
                  std::uint8_t* out);
void AddNoiseToLumaRow(const signed char* noise, const std::uint16_t* blockPosition, std::uint8_t* luma,
                       std::int32_t bytes);
void RememberBlocks(const BlockRow& row);
void MeasureBlocks(const BlockRow& row, const BlockComparisons& results, BlockTotals& totals);

extern const KernelTable kKernels;

}  // namespace vidproc::VIDPROC_TARGET
#endif
