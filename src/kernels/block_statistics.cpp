// The comparison of blocks in the auto-exposure service: sums of c, c * c and c * r over the luma of each 16 x 16
// block, c in the frame and r in the reference, and from these the block's correlation with its reference.
//
// A block's row is 32 bytes of a frame: half a row, one row or two rows fill a vector. The sums are exact: 32 samples
// of 255 fit a 16-bit lane, 256 squares a 32-bit lane.
#include "kernels/block_statistics.h"

#include "compiler/compiler.h"
#include "kernels/kernel_table.h"
#include "simd/simd.h"

namespace vidproc::VIDPROC_TARGET {
namespace {

constexpr int kBlockRowBytes = 2 * kExposureBlockSize;
constexpr int kRowsPerVector = kVectorBytes > kBlockRowBytes ? kVectorBytes / kBlockRowBytes : 1;
constexpr int kBlocksPerLine = 2;    // of the cache
constexpr int kPrefetchBytes = 128;  // hardware prefetchers do not follow the step from row to row
/// Blocks whose sums stay on the stack until they are compared.
constexpr int kBlocksPerPass = 64;

constexpr double kOne = 65536;                 // 1 in 16.16
constexpr std::uint32_t kLowestRatio = 58983;  // 0.9
constexpr std::uint32_t kRatioWindow = 13105;  // up to 1.1
constexpr int kMatchingCorrelation = 52429;    // 0.8
constexpr int kFlatBlockCorrelation = 39323;   // 0.6
constexpr int kTextureLimit = 3000;

/// In the order of StoreSums, whose fourth sum is overwritten by the sample.
struct BlockSums {
  std::int32_t samples;
  std::int32_t squares;
  std::int32_t products;
  std::int32_t firstSample;
};

struct LaneSums {
  I16 samples = SplatI16(0);
  I32 squares = AsI32(samples);
  I32 products = AsI32(samples);
};

/// kLanes samples of a block; `pitch` leads to its next row, where vectors are longer than a row.
inline I16 LoadLuma(const std::uint8_t* pixels, [[maybe_unused]] std::ptrdiff_t pitch) {
  if constexpr (kRowsPerVector > 1) {
    return OddBytes(LoadHalves(pixels, pixels + pitch));
  } else {
    return OddBytes(LoadU8(pixels));
  }
}

/// Counting rows in bytes keeps compilers from unrolling all of them, which spills.
template <int kBlocks>
inline void SumBlocks(const std::uint8_t* frame, std::ptrdiff_t pitch, const std::uint8_t* referenceLuma,
                      BlockSums* sums) {
  LaneSums lanes[kBlocks];
  for (std::ptrdiff_t row = 0; row < kExposureBlockSize * pitch; row += kRowsPerVector * pitch) {
    for (int i = 0; i < kRowsPerVector; ++i) Prefetch(frame + row + i * pitch + kPrefetchBytes);
    for (int b = 0; b < kBlockRowBytes; b += kVectorBytes, referenceLuma += kLanes) {
      for (int block = 0; block < kBlocks; ++block) {
        const I16 c = LoadLuma(frame + row + b + block * kBlockRowBytes, pitch);
        const I16 r = LoadWiden(referenceLuma + block * kExposureBlockSamples);
        lanes[block].samples = Add(lanes[block].samples, c);
        lanes[block].squares = Add(lanes[block].squares, MultiplyAdd(c, c));
        lanes[block].products = Add(lanes[block].products, MultiplyAdd(c, r));
      }
    }
  }
  for (int block = 0; block < kBlocks; ++block) {
    const I32 samples = MultiplyAdd(lanes[block].samples, SplatI16(1));
    StoreSums(reinterpret_cast<std::int32_t*>(&sums[block]), samples, lanes[block].squares, lanes[block].products);
    sums[block].firstSample = frame[block * kBlockRowBytes + 1];
  }
}

void SumRow(const std::uint8_t* frame, std::ptrdiff_t pitch, int blocks, const std::uint8_t* referenceLuma,
            BlockSums* sums) {
  int block = 0;
  for (; block + kBlocksPerLine <= blocks; block += kBlocksPerLine) {
    SumBlocks<kBlocksPerLine>(frame + block * kBlockRowBytes, pitch, referenceLuma + block * kExposureBlockSamples,
                              sums + block);
  }
  if (block < blocks) {
    SumBlocks<1>(frame + block * kBlockRowBytes, pitch, referenceLuma + block * kExposureBlockSamples, sums + block);
  }
}

/// 256 times the variance. The square of the sum fills all 32 bits.
inline std::int32_t Variance(const BlockSums& sums) {
  const auto sum = static_cast<std::uint32_t>(sums.samples);
  return static_cast<std::int32_t>(static_cast<std::uint32_t>(sums.squares) -
                                   (sum * sum + kExposureBlockSamples / 2) / kExposureBlockSamples);
}

/// Free of branches, so that compilers make vectors of it. Doubles hold every number here exactly (below 2^53), and so
/// the integer part of their quotients is exact.
void CompareBlocks(const BlockSums* sums, const ReferenceBlock* references, int count, const BlockComparisons& results,
                   BlockTotals& totals) {
  std::int32_t matching = 0;
  std::uint32_t firstSamples = 0;
  for (int i = 0; i < count; ++i) {
    const BlockSums c = sums[i];
    const ReferenceBlock r = references[i];
    // Sum of (r - rMean) * (c - cMean), multiplied out; it lies within 2^23 of 0.
    const int cMean = c.samples / kExposureBlockSamples;
    const int rMean = r.sum / kExposureBlockSamples;
    const int covariance = c.products - rMean * c.samples - cMean * r.sum + kExposureBlockSamples * rMean * cMean;
    const int variance = Variance(c);
    const int deviation = static_cast<int>(SquareRoot(1.0 * r.variance * variance));
    // The rounded means add at most 2^8 to |covariance| <= deviation + 1: the quotient stays below 2^25.
    // A deviation of 0 means a block of one value, and then the covariance is 0 too.
    const int isPlain = deviation == 0;
    const int correlation = static_cast<int>(kOne * (covariance + isPlain) / (deviation + isPlain));
    // Vectors of doubles convert to signed integers only, and a ratio may fill 32 bits: its lowest bit is apart.
    const double ratio = kOne * r.sum / (c.samples + (c.samples == 0));
    const int halfRatio = static_cast<int>(0.5 * ratio);
    const int lowestBit = static_cast<int>(ratio - 2.0 * halfRatio);
    const std::uint32_t meanRatio = 2 * static_cast<std::uint32_t>(halfRatio) + static_cast<std::uint32_t>(lowestBit);
    const bool isFlat = (variance < kTextureLimit) & (r.variance < kTextureLimit);
    const bool matches = (meanRatio - kLowestRatio <= kRatioWindow) &
                         ((correlation >= kMatchingCorrelation) | (isFlat & (correlation >= kFlatBlockCorrelation)));
    results.correlation[i] = correlation;
    results.meanRatio[i] = meanRatio;
    results.isFlat[i] = isFlat;
    matching += matches;
    firstSamples += static_cast<std::uint32_t>(matches ? c.firstSample : r.firstSample);
  }
  totals.matching += matching;
  totals.firstSamples += firstSamples;
}

}  // namespace

void MeasureBlocks(const BlockRow& row, const BlockComparisons& results, BlockTotals& totals) {
  BlockSums sums[kBlocksPerPass];
  for (int first = 0; first < row.count; first += kBlocksPerPass) {
    const int count = row.count - first < kBlocksPerPass ? row.count - first : kBlocksPerPass;
    SumRow(row.frame + first * kBlockRowBytes, row.pitch, count, row.referenceLuma + first * kExposureBlockSamples,
           sums);
    CompareBlocks(sums, row.references + first, count,
                  {results.correlation + first, results.meanRatio + first, results.isFlat + first}, totals);
  }
}

void RememberBlocks(const BlockRow& row) {
  for (int block = 0; block < row.count; ++block) {
    const std::uint8_t* const frame = row.frame + block * kBlockRowBytes;
    std::uint8_t* const luma = row.referenceLuma + block * kExposureBlockSamples;
    std::uint8_t* next = luma;
    for (std::ptrdiff_t y = 0; y < kExposureBlockSize; y += kRowsPerVector) {
      for (int b = 0; b < kBlockRowBytes; b += kVectorBytes, next += kLanes) {
        StoreNarrow(next, LoadLuma(frame + y * row.pitch + b, row.pitch));
      }
    }
    BlockSums sums;
    SumBlocks<1>(frame, row.pitch, luma, &sums);
    row.references[block] = {sums.samples, Variance(sums), sums.firstSample};
  }
}

}  // namespace vidproc::VIDPROC_TARGET
