// Block statistics of the auto-exposure service: sums of c, r, c * c, r * r and c * r over the luma of 16 x 16 blocks,
// c in the frame and r in the reference, both packed 2vuy.
//
// A block's row is 32 bytes: half a row, one row or the rows of two neighbouring blocks fill a vector. The sums are
// exact: 32 samples of 255 fit a 16-bit lane, 256 samples of 255 the unsigned halves of a 32-bit lane, and 256 squares
// a 32-bit lane.
#include "exposure/block_statistics.h"

#include "simd/kernel_table.h"
#include "simd/simd.h"

namespace vidproc::VIDPROC_TARGET {
namespace {

constexpr int kBlockRowBytes = 2 * kExposureBlockSize;
constexpr int kBlocksPerVector = kVectorBytes > kBlockRowBytes ? kVectorBytes / kBlockRowBytes : 1;

/// A tile's five sums come in four words: the sums of c and r share one.
struct Sums {
  I16 frame = SplatI16(0);
  I16 reference = SplatI16(0);
  I32 frameSquares = {frame.raw};
  I32 referenceSquares = {frame.raw};
  I32 products = {frame.raw};
};

inline void AddPixels(Sums& sums, U8 framePixels, U8 referencePixels) {
  const I16 c = ShiftRightLogical<8>(AsI16(framePixels));
  const I16 r = ShiftRightLogical<8>(AsI16(referencePixels));
  sums.frame = Add(sums.frame, c);
  sums.reference = Add(sums.reference, r);
  sums.frameSquares = Add(sums.frameSquares, MultiplyAdd(c, c));
  sums.referenceSquares = Add(sums.referenceSquares, MultiplyAdd(r, r));
  sums.products = Add(sums.products, MultiplyAdd(c, r));
}

/// In every tile, {sum of a's lanes, of b's, of c's, of d's}.
inline I32 SumTiles(I32 a, I32 b, I32 c, I32 d) {
  const I32 ab = Add(I32{ZipLow32(a.raw, b.raw)}, I32{ZipHigh32(a.raw, b.raw)});
  const I32 cd = Add(I32{ZipLow32(c.raw, d.raw)}, I32{ZipHigh32(c.raw, d.raw)});
  return Add(I32{ZipLow64(ab.raw, cd.raw)}, I32{ZipHigh64(ab.raw, cd.raw)});
}

/// Adds up the tiles of each of kBlocks blocks.
template <int kBlocks>
inline void StoreStatistics(const Sums& sums, BlockStatistics* statistics) {
  const Raw low = ZipLow16(sums.frame.raw, sums.reference.raw);
  const Raw high = ZipHigh16(sums.frame.raw, sums.reference.raw);
  const I32 bothSums = {Add(I16{low}, I16{high}).raw};
  BlockStatistics tiles[kTiles];
  Store(tiles, SumTiles(bothSums, sums.frameSquares, sums.referenceSquares, sums.products));
  constexpr int kTilesPerBlock = kTiles / kBlocks;
  for (int block = 0; block < kBlocks; ++block) {
    BlockStatistics total = tiles[block * kTilesPerBlock];
    for (int i = 1; i < kTilesPerBlock; ++i) {
      const BlockStatistics& tile = tiles[block * kTilesPerBlock + i];
      total.sums += tile.sums;
      total.frameSquares += tile.frameSquares;
      total.referenceSquares += tile.referenceSquares;
      total.products += tile.products;
    }
    statistics[block] = total;
  }
}

/// kBlocksPerVector blocks side by side. Counting in bytes keeps compilers from unrolling all rows, which spills; and
/// hardware does not foresee the jumps between rows: each fetches its successor in the block row measured next.
inline void MeasureNeighbours(const std::uint8_t* frame, const std::uint8_t* reference, std::ptrdiff_t pitch,
                              std::ptrdiff_t ahead, BlockStatistics* statistics) {
  Sums sums;
  for (std::ptrdiff_t row = 0; row < kExposureBlockSize * pitch; row += pitch) {
    __builtin_prefetch(frame + row + ahead);
    __builtin_prefetch(reference + row + ahead);
    for (int b = 0; b < kBlockRowBytes; b += kVectorBytes) {
      AddPixels(sums, LoadU8(frame + row + b), LoadU8(reference + row + b));
    }
  }
  StoreStatistics<kBlocksPerVector>(sums, statistics);
}

/// One block alone, each tile on a row of its own: for vectors wider than a block's row.
inline void MeasureAlone(const std::uint8_t* frame, const std::uint8_t* reference, std::ptrdiff_t pitch,
                         BlockStatistics* statistics) {
  Sums sums;
  for (std::ptrdiff_t row = 0; row < kExposureBlockSize * pitch; row += kTiles * pitch) {
    for (int b = 0; b < kBlockRowBytes; b += kBlockRowBytes / 2) {
      AddPixels(sums, LoadTiles(frame + row + b, pitch), LoadTiles(reference + row + b, pitch));
    }
  }
  StoreStatistics<1>(sums, statistics);
}

}  // namespace

void MeasureBlocks(const std::uint8_t* frame, const std::uint8_t* reference, std::ptrdiff_t pitch, std::ptrdiff_t ahead,
                   int blocks, BlockStatistics* statistics) {
  int block = 0;
  for (; block + kBlocksPerVector <= blocks; block += kBlocksPerVector) {
    const int b = block * kBlockRowBytes;
    MeasureNeighbours(frame + b, reference + b, pitch, ahead, statistics + block);
  }
  for (; block < blocks; ++block) {
    const int b = block * kBlockRowBytes;
    MeasureAlone(frame + b, reference + b, pitch, statistics + block);
  }
}

}  // namespace vidproc::VIDPROC_TARGET
