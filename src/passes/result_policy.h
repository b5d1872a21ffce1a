// What happens to a filtered value before it is stored as a byte: policies of the horizontal pass.
#pragma once

#include "passes/tap_weighting.h"
#include "simd/simd.h"

namespace vidproc::VIDPROC_TARGET {
namespace {

/// Clamps to 0..255.
struct ClampResult {
  void Put(std::uint8_t* out, I16 value) const { StoreNarrow(out, value); }
};

/// (value - offset) * gain in 64ths, then clamps. kept: the product wraps in 16 bits.
struct LumaShiftResult {
  I16 gain;
  I16 offset;
  void Put(std::uint8_t* out, I16 value) const {
    StoreNarrow(out, ShiftRight<6>(MultiplyLow(SubtractSaturate(value, offset), gain)));
  }
};

/// Blends with the history byte that the result replaces, by the difference weight curve; then clamps.
/// kept: the sum is shifted as unsigned, so that a negative one becomes 255.
struct BlendResult {
  int strength;
  int shift;
  void Put(std::uint8_t* history, I16 value) const {
    const I16 reference = LoadWiden(history);
    const I16 kept = Subtract(SplatI16(256), LostWeight(SubtractSaturate(reference, value), shift));
    const I16 alpha = ShiftRightLogical<8>(Add(MultiplyLow(kept, SplatI16(strength)), SplatI16(128)));
    const I16 current = MultiplyLow(Subtract(SplatI16(128), alpha), value);
    const I16 sum = AddSaturate(AddSaturate(current, MultiplyLow(alpha, reference)), SplatI16(64));
    StoreNarrow(history, ShiftRightLogical<7>(sum));
  }
};

}  // namespace
}  // namespace vidproc::VIDPROC_TARGET
