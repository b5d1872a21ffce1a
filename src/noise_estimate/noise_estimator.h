// How strong a camera's noise is, by its frames: what changes from one to the next in blocks where nothing else does.
//
// A grid of blocks is looked at, the same in every frame. A block's figure is the variance of its samples' changes, so
// that a change of light, which moves a whole block, does not count; and it is bounded by the variance of the block
// itself, so that flat areas stay without noise when they move. Blocks with texture that move have large figures and
// those at rest small ones: the frame's figure is the lower quartile. The estimate is the median of the last frames.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace vidproc {

/// Luma samples as they lie in a frame.
struct LumaRows {
  const std::uint8_t* first;  ///< of the top row
  std::ptrdiff_t stride;
  std::int32_t sampleStep;  ///< 1, or 2 in packed rows
};

inline constexpr std::int32_t kNoiseBlockWidth = 16, kNoiseBlockHeight = 4;
using NoiseBlock = std::array<std::uint8_t, kNoiseBlockWidth * kNoiseBlockHeight>;

class NoiseEstimator {
 public:
  NoiseEstimator(std::int32_t width, std::int32_t height);

  /// Looks at the next frame of the given size. Integer arithmetic, a time that does not depend on the size.
  void Measure(const LumaRows& frame);
  /// Standard deviation of the noise in hundredths of a luma level; 0 before the first frame, and in pictures that are
  /// too small to tell.
  std::int32_t Deviation() const { return deviation; }
  /// The next frame is the first one.
  void Forget();

 private:
  static constexpr std::int32_t kColumns = 16, kRows = 16;  // of the grid
  static constexpr std::size_t kFrames = 9;                 // of the median

  /// Where a block of the grid begins, in samples.
  struct Place {
    std::int32_t x, y;
  };

  const std::uint8_t* Samples(const LumaRows& frame, std::int32_t block) const;
  template <int kStep>
  static NoiseBlock Read(const std::uint8_t* samples, std::ptrdiff_t stride);
  static void PrefetchBlock(const std::uint8_t* samples, std::ptrdiff_t stride);
  void Add(std::int32_t figure);

  std::int32_t columns, rows;
  std::array<Place, kColumns * kRows> places;
  std::array<NoiseBlock, kColumns * kRows> previous;
  std::array<std::int32_t, kFrames> figures{};  ///< of the last frames, the oldest to be replaced at `next`
  std::size_t next = 0;
  std::size_t frames = 0;    ///< that have a figure, up to kFrames
  std::int32_t repeats = 0;  ///< frames in a row that equal the one before
  std::int32_t deviation = 0;
  bool hasPrevious = false;
};

}  // namespace vidproc
