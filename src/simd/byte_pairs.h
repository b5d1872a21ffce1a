// MultiplyPairs for the sets that have no instruction for it.
#pragma once

namespace vidproc::VIDPROC_TARGET {
namespace {

inline I16 MultiplyPairs(U8 a, U8 b) {
  const I16 pairsA = AsI16(a), pairsB = AsI16(b);
  return AddSaturate(MultiplyLow(And(pairsA, SplatI16(0xFF)), ShiftRight<8>(ShiftLeft(pairsB, 8))),
                     MultiplyLow(ShiftRightLogical<8>(pairsA), ShiftRight<8>(pairsB)));
}

}  // namespace
}  // namespace vidproc::VIDPROC_TARGET
