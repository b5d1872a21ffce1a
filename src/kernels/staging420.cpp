// Rows of 4:2:0 frames with interleaved chroma to 2vuy rows and back: Cb Y Cr Y is the pairwise interleaving of
// Cb Cr and Y Y.
#include "kernels/kernel_table.h"
#include "simd/simd.h"

namespace vidproc::VIDPROC_TARGET {

void InterleaveRow(const std::uint8_t* luma, const std::uint8_t* chroma, std::uint8_t* row, std::ptrdiff_t bytes) {
  std::ptrdiff_t pair = 0;
  for (; 2 * pair + kVectorBytes <= bytes; pair += kLanes) {
    Store(row + 2 * pair, Or(AsU8(LoadWiden(chroma + pair)), AsU8(ShiftLeft(LoadWiden(luma + pair), 8))));
  }
  for (; 2 * pair < bytes; ++pair) {
    row[2 * pair] = chroma[pair];
    row[2 * pair + 1] = luma[pair];
  }
}

void SplitRow(const std::uint8_t* row, std::uint8_t* luma, std::uint8_t* chroma, std::ptrdiff_t bytes) {
  std::ptrdiff_t pair = 0;
  for (; 2 * pair + kVectorBytes <= bytes; pair += kLanes) {
    const I16 pairs = LoadI16(row + 2 * pair);
    StoreNarrow(chroma + pair, And(pairs, SplatI16(0xFF)));
    StoreNarrow(luma + pair, ShiftRightLogical<8>(pairs));
  }
  for (; 2 * pair < bytes; ++pair) {
    chroma[pair] = row[2 * pair];
    luma[pair] = row[2 * pair + 1];
  }
}

}  // namespace vidproc::VIDPROC_TARGET
