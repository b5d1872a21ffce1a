// Two rows to one of alternating bytes, and back: Cb Y Cr Y is the pairwise interleaving of Cb Cr and Y Y, and Cb Cr
// that of Cb and Cr.
#include "kernels/kernel_table.h"
#include "kernels/passes/byte_vertical_pass.h"
#include "kernels/passes/vector_walk.h"
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
  constexpr int kStep = 2 * kVectorBytes;
  if (bytes >= kStep) {
    const SplitResult split{{luma, chroma}};
    return WalkSteps(static_cast<int>(bytes), kStep,
                     [&](std::ptrdiff_t b) { split.Put(b, LoadU8(row + b), LoadU8(row + b + kVectorBytes)); });
  }
  for (std::ptrdiff_t pair = 0; 2 * pair < bytes; ++pair) {
    chroma[pair] = row[2 * pair];
    luma[pair] = row[2 * pair + 1];
  }
}

}  // namespace vidproc::VIDPROC_TARGET
