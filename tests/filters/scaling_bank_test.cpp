// Banks of the interface's scaler: what every bank keeps to, and some whose values are known.
#include "filters/scaling_bank.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <numeric>
#include <tuple>
#include <vector>

namespace {

using namespace vidproc::filters;
using Taps = std::vector<int>;

struct Ratio {
  int up, down;
};

constexpr Ratio kRatios[] = {{1, 1}, {1, 2}, {2, 3}, {3, 4}, {1, 3}, {1, 4}, {1, 8}, {45, 61}, {2, 1}, {3, 2}, {4, 3}};
constexpr ScalingKernel kKernels[] = {ScalingKernel::kAutomatic,  ScalingKernel::kIdentity, ScalingKernel::kBilinear,
                                      ScalingKernel::kCatmullRom, ScalingKernel::kMitchell, ScalingKernel::kLanczos,
                                      ScalingKernel::kArea};
constexpr int kTapCounts[] = {4, 8, 16};

struct Designed {
  Bank phases;
  int taps;
  bool accepted;

  Designed(const ScalingFilter& filter, Ratio ratio, int taps, int bits = 7) : taps(taps) {
    std::memset(phases, 0x55, sizeof(phases));
    accepted = DesignScalingBank(filter, ratio.up, ratio.down, taps, bits, phases);
  }
  Taps operator[](int phase) const { return Taps(phases[phase], phases[phase] + taps); }
};

ScalingFilter Filter(ScalingKernel kernel, std::uint32_t sharpening = 0) { return {kernel, {}, sharpening}; }

using BankParameters = std::tuple<ScalingKernel, int, std::uint32_t>;
class EveryBank : public testing::TestWithParam<BankParameters> {
 protected:
  template <typename Check>
  void ForEachPhase(Check check) {
    const auto& [kernel, taps, sharpening] = GetParam();
    for (const Ratio ratio : kRatios) {
      for (const int bits : {6, 7}) {
        const Designed bank(Filter(kernel, sharpening), ratio, taps, bits);
        ASSERT_TRUE(bank.accepted);
        for (int phase = 0; phase < kPhases; ++phase) {
          SCOPED_TRACE(testing::Message() << ratio.up << ":" << ratio.down << ", " << bits << " bits, phase " << phase);
          check(bank, phase, bits);
        }
      }
    }
  }
};

TEST_P(EveryBank, SumsToOne) {
  ForEachPhase([](const Designed& bank, int phase, int bits) {
    EXPECT_EQ(std::accumulate(bank.phases[phase], bank.phases[phase] + kMaxTaps, 0), 1 << bits);
    EXPECT_EQ(std::count(bank.phases[phase] + bank.taps, bank.phases[phase] + kMaxTaps, 0), kMaxTaps - bank.taps);
  });
}

// A tap and its mirror lie at the same distance from the output sample.
TEST_P(EveryBank, IsItsOwnMirror) {
  ForEachPhase([](const Designed& bank, int phase, int) {
    const int last = phase == 0 ? bank.taps - 2 : bank.taps - 1;
    for (int t = 0; t <= last; ++t) EXPECT_EQ(bank.phases[phase][t], bank.phases[(16 - phase) % 16][last - t]);
    EXPECT_TRUE(phase != 0 || bank.phases[0][bank.taps - 1] == 0);
  });
}

// Chroma beside the left luma sample has the same phase everywhere at 2:1: no other would make up for a shift.
TEST_P(EveryBank, StaysInPlace) {
  if (std::get<ScalingKernel>(GetParam()) == ScalingKernel::kArea) GTEST_SKIP() << "the mean lies where its part lies";
  ForEachPhase([](const Designed& bank, int phase, int bits) {
    int moment = 0;
    for (int t = 0; t < bank.taps; ++t) moment += bank.phases[phase][t] * (16 * (t - (bank.taps / 2 - 1)) - phase);
    EXPECT_EQ(moment, 0) << phase << ", " << bits;
  });
}

INSTANTIATE_TEST_SUITE_P(ScalingBanks, EveryBank,
                         testing::Combine(testing::ValuesIn(kKernels), testing::ValuesIn(kTapCounts),
                                          testing::Values(0u, 3u, 16u)));

struct KnownScalingPhase {
  ScalingKernel kernel;
  Ratio ratio;
  std::uint32_t sharpening;
  int phase;
  Taps taps;
};

class KnownScalingPhases : public testing::TestWithParam<KnownScalingPhase> {};

TEST_P(KnownScalingPhases, Match) {
  const KnownScalingPhase& known = GetParam();
  const Designed bank(Filter(known.kernel, known.sharpening), known.ratio, static_cast<int>(known.taps.size()));
  EXPECT_EQ(bank[known.phase], known.taps);
}

INSTANTIATE_TEST_SUITE_P(
    Interpolation, KnownScalingPhases,
    testing::Values(KnownScalingPhase{ScalingKernel::kIdentity, {1, 1}, 0, 0, {0, 128, 0, 0}},
                    KnownScalingPhase{ScalingKernel::kIdentity, {1, 1}, 1, 0, {-8, 144, -8, 0}},
                    KnownScalingPhase{ScalingKernel::kIdentity, {1, 1}, 16, 0, {0, 0, -128, 384, -128, 0, 0, 0}},
                    KnownScalingPhase{ScalingKernel::kBilinear, {2, 1}, 0, 5, {0, 88, 40, 0}},
                    KnownScalingPhase{ScalingKernel::kBilinear, {1, 2}, 0, 8, {16, 48, 48, 16}},
                    KnownScalingPhase{ScalingKernel::kCatmullRom, {2, 1}, 0, 4, {-9, 111, 29, -3}},
                    KnownScalingPhase{ScalingKernel::kCatmullRom, {2, 1}, 0, 8, {0, 0, -8, 72, 72, -8, 0, 0}},
                    KnownScalingPhase{ScalingKernel::kMitchell, {2, 1}, 0, 0, {7, 114, 7, 0}},
                    KnownScalingPhase{ScalingKernel::kMitchell, {2, 1}, 0, 8, {-4, 68, 68, -4}}));

INSTANTIATE_TEST_SUITE_P(
    Automatic, KnownScalingPhases,
    testing::Values(KnownScalingPhase{ScalingKernel::kAutomatic, {1, 2}, 0, 8, {0, 64, 64, 0}},
                    KnownScalingPhase{ScalingKernel::kAutomatic, {1, 2}, 0, 8, {0, -11, 11, 64, 64, 11, -11, 0}},
                    KnownScalingPhase{ScalingKernel::kAutomatic, {2, 1}, 0, 4, {-10, 112, 30, -4}},
                    KnownScalingPhase{ScalingKernel::kAutomatic, {2, 1}, 0, 12, {0, 1, -8, 35, 114, -18, 4, 0}}));

INSTANTIATE_TEST_SUITE_P(
    AreaIsTheMean, KnownScalingPhases,
    testing::Values(KnownScalingPhase{ScalingKernel::kArea, {1, 2}, 0, 8, {0, 64, 64, 0}},
                    KnownScalingPhase{ScalingKernel::kArea, {2, 3}, 0, 4, {0, 85, 43, 0}},
                    KnownScalingPhase{ScalingKernel::kArea, {1, 3}, 0, 0, {0, 0, 43, 42, 43, 0, 0, 0}},
                    KnownScalingPhase{ScalingKernel::kArea, {1, 4}, 0, 8, {0, 0, 32, 32, 32, 32, 0, 0}},
                    KnownScalingPhase{ScalingKernel::kArea, {2, 1}, 0, 12, {0, 32, 96, 0}}));

// Catmull-Rom with x = phase / 16 as a fraction over 8192: one coefficient is at most one unit from 128 times that.
TEST(ScalingBank, CatmullRomFollowsItsPolynomials) {
  const Designed bank(Filter(ScalingKernel::kCatmullRom), {1, 1}, 4);
  for (int x = 0; x < kPhases; ++x) {
    const int exact[] = {-x * x * x + 32 * x * x - 256 * x, 3 * x * x * x - 80 * x * x + 8192,
                         -3 * x * x * x + 64 * x * x + 256 * x, x * x * x - 16 * x * x};
    for (int t = 0; t < 4; ++t) EXPECT_LT(std::abs(64 * bank.phases[x][t] - exact[t]), 64) << x << ", " << t;
  }
}

std::uint32_t HashOfBanks(ScalingKernel kernel) {
  std::uint32_t hash = 2166136261u;
  for (const Ratio ratio : kRatios) {
    for (const int taps : kTapCounts) {
      for (const std::uint32_t sharpening : {0u, 3u, 16u}) {
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
  EXPECT_EQ(HashOfBanks(ScalingKernel::kAutomatic), 3981739563u);
  EXPECT_EQ(HashOfBanks(ScalingKernel::kIdentity), 1519110805u);
  EXPECT_EQ(HashOfBanks(ScalingKernel::kBilinear), 3288195923u);
  EXPECT_EQ(HashOfBanks(ScalingKernel::kCatmullRom), 4136427529u);
  EXPECT_EQ(HashOfBanks(ScalingKernel::kMitchell), 274011123u);
  EXPECT_EQ(HashOfBanks(ScalingKernel::kLanczos), 731402369u);
  EXPECT_EQ(HashOfBanks(ScalingKernel::kArea), 2569882157u);
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
  const ScalingFilter automatic;
  EXPECT_FALSE(Designed(automatic, {0, 1}, 4).accepted);
  EXPECT_FALSE(Designed(automatic, {1, -1}, 4).accepted);
  EXPECT_FALSE(Designed(automatic, {1, 1}, 6).accepted);
  EXPECT_FALSE(Designed(automatic, {1, 1}, 4, 8).accepted);
  EXPECT_FALSE(Designed(Filter(ScalingKernel::kArea, 17), {1, 1}, 4).accepted);
  EXPECT_FALSE(Designed({ScalingKernel::kFixedWidth, {3, 0, 3}, 0}, {1, 1}, 4).accepted);
  EXPECT_EQ(Designed(automatic, {1, 1}, 6).phases[15][15], 0x5555) << "the bank stays as it was";
}

TEST(ScalingBank, KnowsWhatFitsSignedBytes) {
  const auto fits = [](const std::vector<std::int16_t>& phase) {
    return FitsSignedBytes(phase.data(), static_cast<int>(phase.size()));
  };
  EXPECT_TRUE(fits({-127, 127, 127, 1}));
  EXPECT_TRUE(fits({0, 128, 0, 0}));
  EXPECT_FALSE(fits({1, 128, -1, 0}));
  EXPECT_FALSE(fits({-128, 0, 128, 128}));
}

}  // namespace
