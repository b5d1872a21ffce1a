// Filter design: resampling and deblocking banks, the folded enhancement kernel, ratios and lane copies.
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <climits>
#include <cstdlib>
#include <numeric>
#include <string>
#include <tuple>
#include <vector>

#include "vidproc/video_processor.h"

namespace {

using Taps = std::vector<int>;

Taps FirstTaps(const std::int16_t* phase, int taps) { return Taps(phase, phase + taps); }

int Sum(const Taps& taps) { return std::accumulate(taps.begin(), taps.end(), 0); }

struct Bank {
  std::int16_t phases[16][16] = {};
  int taps;

  Taps operator[](int phase) const { return FirstTaps(phases[phase], taps); }
};

Bank Resampling(std::uint32_t windowKind, std::uint32_t lobes, std::uint32_t soften, int taps, int bits) {
  VideoProcessor processor(1, static_cast<int>(soften));
  processor.windowKind = windowKind;
  processor.lanczosLobes = lobes;
  Bank bank{{}, taps};
  processor.GetFilter(1, 1, bank.phases, taps, bits, 0);
  return bank;
}

struct KnownPhase {
  std::uint32_t windowKind, lobes, soften;
  int bits, phase;
  Taps taps;
};

class KnownPhases : public testing::TestWithParam<KnownPhase> {};

TEST_P(KnownPhases, Match) {
  const KnownPhase& known = GetParam();
  const int taps = static_cast<int>(known.taps.size());
  EXPECT_EQ(Resampling(known.windowKind, known.lobes, known.soften, taps, known.bits)[known.phase], known.taps);
}

INSTANTIATE_TEST_SUITE_P(Gaussian, KnownPhases,
                         testing::Values(KnownPhase{2, 3, 0, 7, 0, {0, 0, 0, 128, 0, 0, 0, 0}},
                                         KnownPhase{2, 3, 0, 7, 1, {0, 0, 0, 114, 14, 0, 0, 0}},
                                         KnownPhase{2, 3, 0, 7, 4, {0, 0, 0, 113, 14, 0, 0, 0}},
                                         KnownPhase{2, 3, 0, 7, 8, {0, 0, 0, 64, 64, 0, 0, 0}},
                                         KnownPhase{2, 3, 0, 7, 12, {0, 0, 0, 14, 113, 0, 0, 0}},
                                         KnownPhase{2, 3, 0, 7, 15, {0, 0, 0, 14, 114, 0, 0, 0}},
                                         KnownPhase{2, 3, 0, 7, 1, {0, 0, 0, 0, 0, 0, 0, 114, 14, 0, 0, 0, 0, 0, 0, 0}},
                                         KnownPhase{2, 3, 0, 7, 4, {0, 0, 0, 0, 0, 0, 0, 113, 14, 0, 0, 0, 0, 0, 0, 0}},
                                         KnownPhase{2, 3, 10, 7, 0, {0, 1, 23, 80, 23, 1, 0, 0}},
                                         KnownPhase{2, 3, 10, 7, 0, {24, 80, 24, 0}}));

INSTANTIATE_TEST_SUITE_P(
    TwoSincs, KnownPhases,
    testing::Values(KnownPhase{0, 3, 0, 6, 0, {0, 64, 0, 0}}, KnownPhase{0, 3, 0, 6, 1, {-2, 64, 4, -2}},
                    KnownPhase{0, 3, 0, 6, 4, {-8, 59, 18, -5}}, KnownPhase{0, 3, 0, 6, 8, {-8, 40, 40, -8}},
                    KnownPhase{0, 3, 0, 6, 12, {-5, 18, 59, -8}}, KnownPhase{0, 3, 0, 6, 15, {-2, 4, 64, -2}},
                    KnownPhase{0, 3, 0, 6, 1, {0, 1, -2, 63, 4, 0, 0, -2}},
                    KnownPhase{0, 3, 0, 6, 4, {0, 2, -7, 56, 17, -3, 0, -1}},
                    KnownPhase{0, 3, 0, 6, 8, {1, 2, -7, 36, 36, -7, 2, 1}}));

// Any tap count that a bank can have, sharp and soft, both precisions: what the dealing of samples promises.
class AnyBank : public testing::TestWithParam<std::tuple<std::uint32_t, std::uint32_t, int, int>> {};

TEST_P(AnyBank, SumsToOneAndKeepsItsPeakInBounds) {
  const auto [windowKind, soften, taps, bits] = GetParam();
  const Bank bank = Resampling(windowKind, 3, soften, taps, bits);
  const int total = 1 << bits;
  EXPECT_EQ(Sum(bank[0]), total);
  EXPECT_EQ(bank[0].back(), 0);
  for (int phase = 1; phase < 16; ++phase) {
    SCOPED_TRACE(phase);
    const Taps row = bank[phase];
    const bool split = phase == 8 || *std::max_element(row.begin(), row.end()) >= 100;
    EXPECT_LE(std::abs(Sum(row) - total), split ? 1 : 0);
  }
  for (int phase = 0; phase < 16; ++phase) {
    for (int tap = taps; tap < 16; ++tap) ASSERT_EQ(bank.phases[phase][tap], 0) << "beyond the taps in use";
  }
}

INSTANTIATE_TEST_SUITE_P(Shapes, AnyBank,
                         testing::Combine(testing::Values(0u, 1u, 2u), testing::Values(0u, 1u, 10u, 40u),
                                          testing::Values(2, 4, 8, 16), testing::Values(6, 7)));

TEST(Resampling, SoftenedGaussianSwitchesDivisor) {
  // exp(-d^2 / 32) vanishes one pixel away, exp(-d^2 / 136) does not.
  EXPECT_EQ(Resampling(2, 3, 0, 4, 7)[0], (Taps{0, 128, 0, 0}));
  EXPECT_GT(Resampling(2, 3, 1, 4, 7)[0][0], 10);
}

TEST(Resampling, SofteningThatWrapsCountsAsNone) {
  for (int phase = 0; phase < 16; ++phase) {
    EXPECT_EQ(Resampling(0, 3, 0xFFFFFFF8u, 8, 6)[phase], Resampling(0, 3, 0, 8, 6)[phase]);
  }
}

TEST(Resampling, PhasesWithoutNumbersKeepOnlyTheirResidue) {
  const Bank bank = Resampling(0, 0, 0, 8, 7);  // no lobes: every sample but the peak is NaN
  EXPECT_EQ(bank[0], (Taps{0, 0, 0, 128, 0, 0, 0, 0}));
  EXPECT_EQ(bank[3], (Taps{0, 0, 0, 0, 0, 0, 0, 128}));
  EXPECT_EQ(bank[8], (Taps{0, 0, 0, 64, 64, 0, 0, 0}));
  EXPECT_EQ(bank[9], (Taps{128, 0, 0, 0, 0, 0, 0, 0}));
}

TEST(Resampling, RefusedShapesLeaveTheBankUntouched) {
  VideoProcessor processor(1, 0);
  std::int16_t bank[16][16] = {{7}};
  std::int16_t deblockBank[16][8] = {{7}};
  const std::pair<int, int> kRefused[] = {{0, 7}, {-2, 7}, {7, 7}, {8, -1}, {8, 15}, {INT_MIN, 7}, {8, INT_MAX}};
  for (const auto& [taps, bits] : kRefused) {
    processor.GetFilter(1, 1, bank, taps, bits, 0);
    processor.GetFilterDeblock(deblockBank, taps, bits, 0);
  }
  processor.GetFilter(1, 1, bank, 18, 7, 0);
  processor.GetFilterDeblock(deblockBank, 10, 7, 0);
  EXPECT_EQ(bank[0][0], 7);
  EXPECT_EQ(bank[1][0], 0);
  EXPECT_EQ(deblockBank[0][0], 7);
  EXPECT_EQ(deblockBank[1][0], 0);
}

TEST(ResamplingDeathTest, UnknownKindEndsTheProcess) {
  VideoProcessor processor(1, 0);
  processor.windowKind = 3;
  EXPECT_EXIT(
      {
        dup2(STDERR_FILENO, STDOUT_FILENO);
        processor.SetEnhanceFilter(EnhanceLaplacian4, 0, 7, 64, 0);
      },
      testing::ExitedWithCode(0), "^Wrong filter type!\n$");
}

TEST(Deblocking, KnownPhases) {
  const struct {
    std::uint8_t level;
    int phase;
    Taps taps;
  } kKnown[] = {{21, 0, {0, 5, 31, 56, 31, 5, 0, 0}},      {32, 0, {4, 13, 28, 38, 28, 13, 4, 0}},
                {48, 0, {10, 17, 24, 26, 24, 17, 10, 0}},  {64, 0, {13, 18, 22, 22, 22, 18, 13, 0}},
                {255, 0, {18, 18, 19, 18, 19, 18, 18, 0}}, {32, 8, {2, 8, 21, 33, 33, 21, 8, 2}}};
  VideoProcessor processor(0, 0);
  for (const auto& known : kKnown) {
    SCOPED_TRACE(int{known.level});
    processor.InitDeblocker(known.level);
    EXPECT_EQ(FirstTaps(processor.deblockHorizontalFilter[known.phase], 8), known.taps);
  }
}

TEST(Deblocking, EveryLevelFillsFourEqualTables) {
  VideoProcessor processor(0, 0);
  for (int level = 0; level < 256; ++level) {
    SCOPED_TRACE(level);
    EXPECT_EQ(processor.InitDeblocker(static_cast<unsigned char>(level)), 0);
    EXPECT_EQ(processor.deblockLevel, level);
    for (int phase = 0; phase < 16; ++phase) {
      const Taps taps = FirstTaps(processor.deblockHorizontalFilter[phase], 8);
      EXPECT_LE(std::abs(Sum(taps) - 128), phase == 8 ? 1 : 0) << phase;
      EXPECT_EQ(FirstTaps(processor.deblockVerticalFilter[phase], 8), taps);
      for (std::size_t tap = 0; tap < 8; ++tap) {
        const Taps lanes(8, taps[tap]);
        ASSERT_EQ(FirstTaps(processor.deblockHorizontalFilterLanes[phase][tap], 8), lanes);
        ASSERT_EQ(FirstTaps(processor.deblockVerticalFilterLanes[phase][tap], 8), lanes);
      }
    }
    EXPECT_EQ(processor.deblockHorizontalFilter[0][7], 0);
  }
}

TEST(Ratio, IsReducedWithoutLimits) {
  const struct {
    int in, out, up, down;
  } kCases[] = {{640, 640, 1, 1},   {640, 320, 1, 2},   {640, 480, 3, 4},
                {1280, 720, 9, 16}, {7, 5, 5, 7},       {0, 0, 0, 0},
                {0, 5, 1, 0},       {5, 0, 0, 1},       {INT_MAX, 1, 1, INT_MAX},
                {-6, 4, -2, 3},     {-4, -6, 3, 2},     {INT_MIN, INT_MIN, 1, 1},
                {INT_MIN, 0, 0, 1}, {0, INT_MIN, 1, 0}, {INT_MIN, 1, 1, INT_MIN}};
  VideoProcessor processor(1, 0);
  for (const auto& c : kCases) {
    int up = 77;
    int down = 77;
    processor.FindUpAndDown(c.in, c.out, &up, &down);
    EXPECT_EQ(std::pair(up, down), std::pair(c.up, c.down)) << c.in << " to " << c.out;
  }
}

// --- The folded enhancement kernel. ---

/// A processor after set-up of its banks alone, as the post-processor (two sincs) or the pre-processor (Gaussian).
struct Configured : VideoProcessor {
  Configured(bool preProcessor, EnhanceFilterTypes type, unsigned strength, bool use16 = false, int soften = 0)
      : VideoProcessor(preProcessor, soften) {
    windowKind = preProcessor ? 2 : 0;
    lanczosLobes = 3;
    use16Taps = use16;
    SetEnhanceFilter(type, strength, preProcessor ? 7 : 6, 128, 0);
  }
  ~Configured() { std::free(ditherTable); }
};

TEST(Enhancement, StrengthNoneStillMovesNegativeCoefficients) {
  const Taps folded = {0, 2, -5, 52, 16, -1, 0, 0};
  const Configured plain(false, EnhanceLaplacian4, 0);
  EXPECT_EQ(FirstTaps(plain.horizontalEnhancedFilter[4], 8), folded);
  EXPECT_EQ(FirstTaps(plain.horizontalFilter[4], 8), folded);
  // The second difference has column sums 0, 16, 0 at any strength.
  const Configured secondDifference(false, EnhanceSecondDifference, 9);
  EXPECT_EQ(FirstTaps(secondDifference.horizontalFilter[4], 8), folded);
}

TEST(Enhancement, KernelsFollowTypeAndStrength) {
  using Kernel = std::vector<int>;
  const struct {
    std::uint32_t type, strength;
    Kernel kernel;
  } kCases[] = {{0, 1, {0, -1, 0, -1, 20, -1, 0, -1, 0}},
                {1, 3, {-3, -3, -3, -3, 40, -3, -3, -3, -3}},
                {2, 2, {2, -4, 2, -4, 24, -4, 2, -4, 2}},
                {7, 5, {2, -4, 2, -4, 24, -4, 2, -4, 2}},  // unknown: the last kernel stays
                {0, 0x12345, {0, -0x2345, 0, -0x2345, -0x72DC, -0x2345, 0, -0x2345, 0}},
                {0, 0, {0, 0, 0, 0, 16, 0, 0, 0, 0}}};
  Configured processor(true, EnhanceLaplacian4, 0);
  for (const auto& c : kCases) {
    processor.SetEnhanceFilter(static_cast<EnhanceFilterTypes>(c.type), c.strength, 7, 64, 0);
    EXPECT_EQ(Kernel(&processor.enhanceKernel[0][0], &processor.enhanceKernel[0][0] + 9), c.kernel);
    EXPECT_EQ(processor.enhanceType, c.type);
    EXPECT_EQ(processor.enhanceStrength, c.strength);
  }
}

TEST(Enhancement, EnhancedPhasesSumToOne) {
  for (const bool preProcessor : {false, true}) {
    for (const std::uint32_t type : {0u, 1u, 2u}) {
      for (const unsigned strength : {0u, 1u, 5u, 30u, 200u}) {
        const Configured p(preProcessor, static_cast<EnhanceFilterTypes>(type), strength, strength % 2 != 0);
        for (int phase = 0; phase < 16; ++phase) {
          SCOPED_TRACE(testing::Message() << preProcessor << " type " << type << " strength " << strength);
          EXPECT_EQ(Sum(FirstTaps(p.horizontalEnhancedFilter[phase], 16)), preProcessor ? 128 : 64) << phase;
          EXPECT_EQ(Sum(FirstTaps(p.verticalEnhancedFilter[phase], 16)), preProcessor ? 128 : 64) << phase;
        }
      }
    }
  }
}

TEST(Enhancement, ReachesAsManyPhasesAsThereAreHorizontalTaps) {
  for (const bool use16 : {false, true}) {
    const int taps = use16 ? 16 : 8;
    const Configured p(false, EnhanceLaplacian4, 6, use16);
    const Bank horizontal = Resampling(0, 3, 0, taps, 6);
    const Bank vertical = Resampling(0, 3, 0, taps / 2, 6);
    for (int phase = 0; phase < 16; ++phase) {
      SCOPED_TRACE(phase);
      const bool enhanced = phase < taps;
      EXPECT_EQ(FirstTaps(p.horizontalFilter[phase], taps),
                enhanced ? FirstTaps(p.horizontalEnhancedFilter[phase], taps) : horizontal[phase]);
      EXPECT_EQ(FirstTaps(p.verticalFilter[phase], taps / 2),
                enhanced ? FirstTaps(p.verticalEnhancedFilter[phase], taps / 2) : vertical[phase]);
    }
    EXPECT_NE(FirstTaps(p.horizontalFilter[4], taps), horizontal[4]);
  }
}

TEST(Enhancement, CanBeLeftOutPerDirection) {
  VideoProcessor p(0, 0);
  p.lanczosLobes = 3;
  p.enhanceHorizontal = 0;
  p.SetEnhanceFilter(EnhanceLaplacian4, 4, 6, 64, 0);
  EXPECT_EQ(FirstTaps(p.horizontalFilter[4], 8), (Taps{0, 2, -7, 56, 17, -3, 0, -1}));
  EXPECT_NE(FirstTaps(p.verticalFilter[4], 4), (Taps{-8, 59, 18, -5}));
  std::free(p.ditherTable);
}

TEST(Enhancement, PhaseThatFoldsToNothingStaysAsRounded) {
  VideoProcessor p(1, 0);
  p.windowKind = 2;
  std::fill_n(&p.enhanceKernel[0][0], 9, std::int16_t{0});
  p.SetEnhanceFilter(static_cast<EnhanceFilterTypes>(9), 0, 7, 64, 0);
  EXPECT_EQ(FirstTaps(p.horizontalFilter[2], 8), Taps(8, 0));
  std::free(p.ditherTable);
}

TEST(Enhancement, WrapsQuietlyForAbsurdArguments) {
  for (const unsigned strength : {0x7FFFFFFFu, 0xFFFFFFFFu, 0x80000000u, 0x1555u}) {
    for (const unsigned bits : {0u, 14u, 15u, 31u, 32u, 0xFFFFFFFFu}) {
      VideoProcessor p(1, -17);
      p.SetEnhanceFilter(EnhanceLaplacian8, strength, bits, SHRT_MIN, SHRT_MAX);
      EXPECT_EQ(p.filtersReady, 1);
      std::free(p.ditherTable);
    }
  }
}

TEST(LaneCopies, RepeatTheTapsInUseAndLeaveTheRest) {
  Configured p(true, EnhanceLaplacian4, 2, true, 10);
  p.SetTaps(0);
  const std::int16_t staleTap = p.horizontalFilterLanes[3][9][5];
  p.SetEnhanceFilter(EnhanceLaplacian4, 2, 7, 128, 0);
  for (int phase = 0; phase < 16; ++phase) {
    for (int tap = 0; tap < 8; ++tap) {
      ASSERT_EQ(FirstTaps(p.horizontalFilterLanes[phase][tap], 8), Taps(8, p.horizontalFilter[phase][tap]));
      if (tap < 4) {
        ASSERT_EQ(FirstTaps(p.verticalFilterLanes[phase][tap], 8), Taps(8, p.verticalFilter[phase][tap]));
      }
    }
  }
  EXPECT_EQ(p.horizontalFilterLanes[3][9][5], staleTap);
}

}  // namespace
