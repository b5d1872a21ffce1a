// Rows of 4:2:0 frames with interleaved chroma to 2vuy rows and back: Cb Y Cr Y is the pairwise interleaving of
// Cb Cr and Y Y.
#include "kernels/kernel_table.h"
#include "simd/simd.h"

namespace vidproc::VIDPROC_TARGET {

void InterleaveRow(const std::uint8_t* luma, const std::uint8_t* chroma, std::uint8_t* row, std::ptrdiff_t bytes) {
  std::ptrdiff_t pair = 0;
  for (; 2 * pair + kVectorBytes <= bytes; pair += kLanes) {
    Store(row + 2 * pair, Interleave(LoadWiden(chroma + pair), LoadWiden(luma + pair)));
  }
  for (; 2 * pair < bytes; ++pair) {
    row[2 * pair] = chroma[pair];
    row[2 * pair + 1] = luma[pair];
  }
}

void SplitRow(const std::uint8_t* row, std::uint8_t* luma, std::uint8_t* chroma, std::ptrdiff_t bytes) {
  std::ptrdiff_t pair = 0;
  for (; 2 * pair + kVectorBytes <= bytes; pair += kLanes) {
    const U8 pairs = LoadU8(row + 2 * pair);
    StoreNarrow(chroma + pair, EvenBytes(pairs));
    StoreNarrow(luma + pair, OddBytes(pairs));
  }
  for (; 2 * pair < bytes; ++pair) {
    chroma[pair] = row[2 * pair];
    luma[pair] = row[2 * pair + 1];
  }
}

}  // namespace vidproc::VIDPROC_TARGET
