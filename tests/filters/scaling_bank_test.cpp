// Banks of the interface's scaler: what every bank keeps to, and the numbers that were released.
#include "filters/scaling_bank.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <iterator>
#include <numeric>
#include <string>

namespace {

using namespace vidproc::filters;

struct Ratio {
  int up, down;
};

constexpr Ratio kRatios[] = {{1, 1}, {1, 2}, {2, 3}, {3, 4}, {1, 3}, {1, 4}, {1, 8}, {45, 61}, {2, 1}, {3, 2}, {4, 3}};
struct NamedKernel {
  const char* name;
  ScalingKernel kernel;
};
constexpr NamedKernel kKernels[] = {
    {"Automatic", ScalingKernel::kAutomatic}, {"Identity", ScalingKernel::kIdentity},
    {"Bilinear", ScalingKernel::kBilinear},   {"CatmullRom", ScalingKernel::kCatmullRom},
    {"Mitchell", ScalingKernel::kMitchell},   {"Lanczos", ScalingKernel::kLanczos},
    {"Area", ScalingKernel::kArea},
};
constexpr int kTapCounts[] = {4, 8, 16};
constexpr std::uint32_t kSharpenings[] = {0, 3, 16};

struct Designed {
  Bank phases;
  int taps;
  bool accepted;

  Designed(const ScalingDesign& filter, Ratio ratio, int taps, int bits = 7) : taps(taps) {
    std::memset(phases, 0x55, sizeof(phases));
    accepted = DesignScalingBank(filter, ratio.up, ratio.down, taps, bits, phases);
  }
};

ScalingDesign Filter(ScalingKernel kernel, std::uint32_t sharpening = 0) { return {kernel, {}, sharpening}; }

class EveryBank : public testing::TestWithParam<NamedKernel> {
 protected:
  template <typename Check>
  void ForEachPhase(const Check& check) {
    for (const int taps : kTapCounts) {
      for (const std::uint32_t sharpening : kSharpenings) {
        for (const Ratio ratio : kRatios) {
          for (const int bits : {6, 7}) {
            const Designed bank(Filter(GetParam().kernel, sharpening), ratio, taps, bits);
            ASSERT_TRUE(bank.accepted);
            SCOPED_TRACE(testing::Message() << taps << " taps, sharpening " << sharpening << ", " << ratio.up << ":"
                                            << ratio.down << ", " << bits << " bits");
            for (int phase = 0; phase < kPhases; ++phase) check(bank, phase, bits);
          }
        }
      }
    }
  }
};

TEST_P(EveryBank, SumsToOne) {
  ForEachPhase([](const Designed& bank, int phase, int bits) {
    const std::int16_t* const taps = bank.phases[phase];
    EXPECT_EQ(std::accumulate(taps, taps + kMaxTaps, 0), 1 << bits) << phase;
    EXPECT_EQ(std::count(taps + bank.taps, taps + kMaxTaps, 0), kMaxTaps - bank.taps) << phase;
  });
}

// A tap and its mirror lie at the same distance from the output sample.
TEST_P(EveryBank, IsItsOwnMirror) {
  ForEachPhase([](const Designed& bank, int phase, int) {
    const int last = phase == 0 ? bank.taps - 2 : bank.taps - 1;
    for (int t = 0; t <= last; ++t) EXPECT_EQ(bank.phases[phase][t], bank.phases[(16 - phase) % 16][last - t]) << phase;
    EXPECT_TRUE(phase != 0 || bank.phases[0][bank.taps - 1] == 0);
  });
}

// Chroma beside the left luma sample has the same phase everywhere at 2:1: no other would make up for a shift.
TEST_P(EveryBank, StaysInPlace) {
  if (GetParam().kernel == ScalingKernel::kArea) GTEST_SKIP() << "the mean lies where its part lies";
  ForEachPhase([](const Designed& bank, int phase, int) {
    int moment = 0;
    for (int t = 0; t < bank.taps; ++t) moment += bank.phases[phase][t] * (16 * (t - (bank.taps / 2 - 1)) - phase);
    EXPECT_EQ(moment, 0) << phase;
  });
}

INSTANTIATE_TEST_SUITE_P(ScalingBanks, EveryBank, testing::ValuesIn(kKernels),
                         [](const auto& info) { return std::string(info.param.name); });

std::uint32_t HashOfBanks(ScalingKernel kernel) {
  std::uint32_t hash = 2166136261u;
  for (const Ratio ratio : kRatios) {
    for (const int taps : kTapCounts) {
      for (const std::uint32_t sharpening : kSharpenings) {
        const Designed bank(Filter(kernel, sharpening), ratio, taps);
        for (const auto& phase : bank.phases) {
          for (const std::int16_t c : phase) hash = (hash ^ static_cast<std::uint16_t>(c)) * 16777619u;
        }
      }
    }
  }
  return hash;
}

// Whatever compiler, C library and processor: only the automatic filter may ever be given other numbers.
TEST(ScalingBank, StaysAsReleased) {
  constexpr std::uint32_t kHashes[] = {3981739563u, 1519110805u, 3288195923u, 4136427529u,
                                       274011123u,  731402369u,  2569882157u};
  for (std::size_t i = 0; i < std::size(kKernels); ++i) EXPECT_EQ(HashOfBanks(kKernels[i].kernel), kHashes[i]) << i;
}

TEST(ScalingBank, TakesFixedWidthKernelsAsDesigned) {
  for (const std::uint32_t kind : {kTwoSincs, kHammingSinc, kGaussian}) {
    const ResamplingKernel fixedWidth = {kind, 10, 3};
    Bank designed = {};
    DesignResamplingBank(fixedWidth, 8, 6, designed);
    const Designed bank({ScalingKernel::kFixedWidth, fixedWidth, 0}, {1, 2}, 8, 6);
    EXPECT_EQ(std::memcmp(bank.phases, designed, sizeof(designed)), 0);
    const Designed sharpened({ScalingKernel::kFixedWidth, fixedWidth, 4}, {1, 2}, 8, 6);
    for (const auto& phase : sharpened.phases) EXPECT_EQ(std::accumulate(phase, phase + 8, 0), 64);
  }
}

TEST(ScalingBank, RefusesWhatItCannotDesign) {
  const ScalingDesign automatic;
  EXPECT_FALSE(Designed(automatic, {0, 1}, 4).accepted);
  EXPECT_FALSE(Designed(automatic, {1, -1}, 4).accepted);
  EXPECT_FALSE(Designed(automatic, {1, 1}, 6).accepted);
  EXPECT_FALSE(Designed(automatic, {1, 1}, 4, 8).accepted);
  EXPECT_FALSE(Designed(Filter(ScalingKernel::kArea, 17), {1, 1}, 4).accepted);
  EXPECT_FALSE(Designed({ScalingKernel::kFixedWidth, {3, 0, 3}, 0}, {1, 1}, 4).accepted);
  EXPECT_EQ(Designed(automatic, {1, 1}, 6).phases[15][15], 0x5555) << "the bank stays as it was";
}

}  // namespace
