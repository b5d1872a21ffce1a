// Motion tests: where the edge-preserving scalers take a sample for still. What moves gets the full low-pass.
//
// A test is a policy of the vertical and the horizontal pass. WithPrevious hands it a row or a column of the previous
// frame; FindStill compares a vector of centre samples with the values `offset` into that, and tells
//
//   OrZero(x)         x where still, else 0
//   Select(a, b)      a where still, else b
#pragma once

#include "kernels/passes/byte_arithmetic.h"
#include "simd/simd.h"

namespace vidproc::VIDPROC_TARGET {
namespace {

/// Everything is still.
struct NoMotionTest {
  template <class Value>
  NoMotionTest WithPrevious(const Value* /*previous*/) const {
    return {};
  }
  template <class Vector>
  NoMotionTest FindStill(Vector /*centre*/, std::ptrdiff_t /*offset*/) const {
    return {};
  }
  I16 OrZero(I16 value) const { return value; }
  U8 Select(U8 ifStill, U8 /*ifMoving*/) const { return ifStill; }
};

/// All bits set where still.
struct StillWords {
  I16 mask;
  I16 OrZero(I16 value) const { return And(mask, value); }
};
struct StillBytes {
  U8 mask;
  U8 Select(U8 ifStill, U8 ifMoving) const { return Or(And(mask, ifStill), AndNot(mask, ifMoving)); }
};

/// Difference below 16. kept: the square wraps, so that differences of 182 and more pass for still again.
inline I16 IsStill(I16 previous, I16 centre) {
  const I16 change = Subtract(previous, centre);
  return Less(MultiplyLow(change, change), SplatI16(256));
}

/// Against the previous input, of bytes.
struct RowMotionTest {
  const std::uint8_t* row = nullptr;
  RowMotionTest WithPrevious(const std::uint8_t* previous) const { return {previous}; }
  StillWords FindStill(I16 centre, std::ptrdiff_t offset) const { return {IsStill(LoadWiden(row + offset), centre)}; }
  StillBytes FindStill(U8 centre, std::ptrdiff_t offset) const {
    // Modulo 256, differences below 16 become 240 and more: still is what then is at least 182 - 16.
    const U8 beyond = Subtract(AbsoluteDifference(LoadU8(row + offset), centre), SplatU8(16));
    return {Equal(Max(beyond, SplatU8(182 - 16)), beyond)};
  }
};

/// Against the previous vertical result, 16-bit values of any size.
struct ColumnMotionTest {
  const std::int16_t* column = nullptr;
  ColumnMotionTest WithPrevious(const std::int16_t* previous) const { return {previous}; }
  StillWords FindStill(I16 centre, std::ptrdiff_t offset) const { return {IsStill(LoadI16(column + offset), centre)}; }
  StillBytes FindStill(U8 centre, std::ptrdiff_t offset) const {
    const Halves before = LoadSplit(column + offset);
    const Halves now = Split(centre);
    return {JoinSigned(IsStill(before.low, now.low), IsStill(before.high, now.high))};
  }
};

/// The tests of a scaler that smooths where the picture moves, or of one that treats all samples alike.
template <bool kSmoothsMotion>
struct MotionTests {
  using Row = NoMotionTest;
  using Column = NoMotionTest;
};
template <>
struct MotionTests<true> {
  using Row = RowMotionTest;
  using Column = ColumnMotionTest;
};

}  // namespace
}  // namespace vidproc::VIDPROC_TARGET
