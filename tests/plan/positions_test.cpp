// Positions of outputs, whose phases index the banks.
#include <gtest/gtest.h>

#include "plan/phase_position.h"

namespace {

using vidproc::LocatePhase;
using vidproc::PhasePosition;

TEST(LocatePhase, CountsFullSixteenthsAfterTheSample) {
  struct Case {
    std::int64_t output;
    vidproc::Ratio ratio;
    std::int32_t source, phase;
  };
  constexpr Case kCases[] = {
      {0, {3, 2}, 0, 0},  {1, {3, 2}, 0, 10}, {2, {3, 2}, 1, 5},  {3, {3, 2}, 2, 0},
      {5, {1, 2}, 10, 0}, {1, {16, 1}, 0, 1}, {1, {17, 1}, 0, 0}, {16, {17, 1}, 0, 15},
  };
  for (const Case& c : kCases) {
    const PhasePosition position = LocatePhase(c.output, c.ratio);
    EXPECT_EQ(position.source, c.source) << c.output;
    EXPECT_EQ(position.phase, c.phase) << c.output;
  }
}

// Ratios written by hand: products beyond 2^53 round up to the next sample in double precision.
TEST(LocatePhase, StaysBelow16WhateverTheRatio) {
  for (const vidproc::Ratio ratio : {vidproc::Ratio{2147483647, 2058326533}, vidproc::Ratio{2147483647, 2147483646}}) {
    for (std::int64_t output = 0; output < 5'000'000; ++output) {
      const PhasePosition position = LocatePhase(output, ratio);
      ASSERT_TRUE(position.phase >= 0 && position.phase < 16) << output;
      ASSERT_LE(std::int64_t{position.source} * ratio.up, output * ratio.down);
    }
  }
}

}  // namespace
