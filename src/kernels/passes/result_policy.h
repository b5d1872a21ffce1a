// What happens to a filtered value before it is stored as a byte: policies of the horizontal pass.
#pragma once

#include "kernels/passes/tap_weighting.h"
#include "simd/simd.h"

namespace vidproc::VIDPROC_TARGET {
namespace {

/// Clamps to 0..255.
struct ClampResult {
  I16 Apply(I16 value) const { return value; }
  void Put(std::uint8_t* out, I16 value) const { StoreNarrow(out, value); }
};

/// (value - offset) * gain in 64ths, then clamps. kept: the product wraps in 16 bits.
struct LumaShiftResult {
  I16 gain;
  I16 offset;
  I16 Apply(I16 value) const { return ShiftRight<6>(MultiplyLow(SubtractSaturate(value, offset), gain)); }
  void Put(std::uint8_t* out, I16 value) const { StoreNarrow(out, Apply(value)); }
};

/// Blend of a value with its reference, by the difference weight curve, in 16-bit lanes.
/// kept: the sum is shifted as unsigned, so that a negative one becomes 255 when it is clamped to a byte.
inline I16 BlendWithReference(I16 value, I16 reference, I16 difference, int strength, int shift) {
  const I16 kept = Subtract(SplatI16(256), LostWeight(difference, shift));
  const I16 alpha = ShiftRightLogical<8>(Add(MultiplyLow(kept, SplatI16(strength)), SplatI16(128)));
  const I16 current = MultiplyLow(Subtract(SplatI16(128), alpha), value);
  const I16 sum = AddSaturate(AddSaturate(current, MultiplyLow(alpha, reference)), SplatI16(64));
  return ShiftRightLogical<7>(sum);
}

/// Blends with the history byte that the result replaces; then clamps.
struct BlendResult {
  int strength;
  int shift;
  void Put(std::uint8_t* history, I16 value) const {
    const I16 reference = LoadWiden(history);
    const I16 difference = SubtractSaturate(reference, value);
    StoreNarrow(history, BlendWithReference(value, reference, difference, strength, shift));
  }
};

}  // namespace
}  // namespace vidproc::VIDPROC_TARGET
