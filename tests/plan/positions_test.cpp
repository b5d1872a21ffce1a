// Positions of outputs, whose phases index the banks.
#include <gtest/gtest.h>

#include <numeric>

#include "plan/phase_position.h"
#include "reference/rows.h"
#include "support/frame_content.h"

namespace {

using vidproc::AlignCorners;
using vidproc::PhasePosition;

// Ratios written by hand: products beyond 2^53 round up to the next sample in double precision.
TEST(CornerPositions, StaysBelow16WhateverTheRatio) {
  for (const vidproc::Ratio ratio : {vidproc::Ratio{2147483647, 2058326533}, vidproc::Ratio{2147483647, 2147483646}}) {
    const vidproc::PositionRule rule = AlignCorners(ratio);
    for (std::int64_t output = 0; output < 5'000'000; ++output) {
      const PhasePosition position = rule.Locate(output);
      ASSERT_TRUE(position.phase >= 0 && position.phase < 16) << output;
      ASSERT_LE(std::int64_t{position.source} * ratio.up, output * ratio.down);
    }
  }
}

TEST(CentredPositions, AreThoseOfThePicture) {
  const struct {
    vidproc::SampleGrid grid;
    double spacing, first;
  } grids[] = {{vidproc::kLumaGrid, 1, 0.5}, {vidproc::kLeftChromaGrid, 2, 0.5}, {vidproc::kCentredChromaGrid, 2, 1}};
  for (std::uint32_t seed = 1; seed <= 200; ++seed) {
    testing_support::Random random(seed);
    const int inSize = random.Between(1, 16384), outSize = random.Pick({inSize, 2 * inSize, random.Between(1, 16384)});
    const int divisor = std::gcd(inSize, outSize);
    for (const auto& in : grids) {
      for (const auto& out : grids) {
        const int k = random.Between(0, outSize - 1);
        const vidproc::Ratio ratio = {outSize / divisor, inSize / divisor};
        const PhasePosition found = vidproc::AlignCentres(ratio, in.grid, out.grid).Locate(k);
        const reference::Place expected =
            reference::CentredPlace(k, outSize, inSize, in.spacing, in.first, out.spacing, out.first);
        EXPECT_EQ(found.source, expected.source) << inSize << " to " << outSize << ", sample " << k;
        EXPECT_EQ(found.phase, expected.phase) << inSize << " to " << outSize << ", sample " << k;
      }
    }
  }
}

}  // namespace
