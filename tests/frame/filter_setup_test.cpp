// The processor's filter set-up: ratios, banks of both directions with their lane copies, deblocking tables, refusals.
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <climits>
#include <utility>

#include "reference/filter_design.h"
#include "support/frame_content.h"
#include "support/kernel_harness.h"
#include "vidproc/video_processor.h"

namespace {

using reference::FilterBank;
using testing_support::Processor;

template <std::size_t kTaps>
void ExpectBank(const std::int16_t (&bank)[16][kTaps], const std::int16_t (&lanes)[16][kTaps][8],
                const FilterBank& expected, const FilterBank& expectedLanes) {
  for (std::size_t phase = 0; phase < 16; ++phase) {
    for (std::size_t tap = 0; tap < kTaps; ++tap) {
      ASSERT_EQ(bank[phase][tap], expected[phase][tap]) << "phase " << phase << " tap " << tap;
      for (const int lane : lanes[phase][tap]) ASSERT_EQ(lane, expectedLanes[phase][tap]) << phase << " " << tap;
    }
  }
}

/// One direction of an object from set-up to set-up: slots that a shorter bank leaves out keep their values.
struct DirectionModel {
  FilterBank bank = {}, enhanced = {}, lanes = {};

  void SetUp(const reference::ResamplingDesign& design, bool enhances, int strength, int enhancedPhases) {
    const auto overwrite = [&](FilterBank& slots, const FilterBank& values) {
      for (std::size_t phase = 0; phase < 16; ++phase)
        std::copy_n(values[phase].begin(), design.taps, slots[phase].begin());
    };
    overwrite(bank, reference::MakeResamplingBank(design));
    if (enhances) {
      const int total = 1 << design.precisionBits;
      overwrite(enhanced, reference::Enhance(bank, {-strength, 2 * strength + 16, -strength}, design.taps, total));
      // kept: as many phases are enhanced as the horizontal direction has taps.
      std::copy_n(enhanced.begin(), enhancedPhases, bank.begin());
    }
    overwrite(lanes, bank);
  }
};

TEST(FilterSetup, BanksFollowTheFieldsFromSetUpToSetUp) {
  testing_support::Random random(3);
  for (int object = 0; object < 20; ++object) {
    const Processor p(new VideoProcessor(1, 0));
    DirectionModel horizontal, vertical;
    for (int setUp = 0; setUp < 6; ++setUp) {
      p->windowKind = static_cast<std::uint32_t>(random.Between(0, 2));
      p->lanczosLobes = static_cast<std::uint32_t>(random.Between(2, 4));
      p->softenLevel = static_cast<std::uint32_t>(random.OneIn(3) ? 0 : random.Between(1, 40));
      p->enhanceHorizontal = !random.OneIn(4);
      p->enhanceVertical = !random.OneIn(4);
      p->SetTaps(random.OneIn(2));
      const int strength = random.Between(0, 30), bits = random.Between(6, 7), taps = p->use16Taps != 0 ? 16 : 8;
      p->SetEnhanceFilter(EnhanceLaplacian4, static_cast<unsigned>(strength), static_cast<unsigned>(bits), 64, 0);
      EXPECT_EQ(p->enhanceStrength, static_cast<unsigned>(strength));

      reference::ResamplingDesign design = {p->windowKind, p->softenLevel, p->lanczosLobes, taps, bits};
      horizontal.SetUp(design, p->enhanceHorizontal != 0, strength, taps);
      design.taps = taps / 2;
      vertical.SetUp(design, p->enhanceVertical != 0, strength, taps);
      SCOPED_TRACE(testing::Message() << "object " << object << " set-up " << setUp);
      ExpectBank(p->horizontalFilter, p->horizontalFilterLanes, horizontal.bank, horizontal.lanes);
      ExpectBank(p->verticalFilter, p->verticalFilterLanes, vertical.bank, vertical.lanes);
      ASSERT_FALSE(HasFailure());
    }
  }
}

TEST(FilterSetup, EnhancementTypeIsStoredAndUsed) {
  const Processor p(new VideoProcessor(1, 0));
  for (const std::uint32_t type : {0u, 1u, 2u, 9u}) {
    p->SetEnhanceFilter(static_cast<EnhanceFilterTypes>(type), 2, 7, 64, 0);
    EXPECT_EQ(p->enhanceType, type);
    EXPECT_EQ(p->enhanceKernel[0][0], type == 0 ? 0 : type == 1 ? -2 : 2);
  }
}

TEST(FilterSetup, RefusedShapesLeaveTheBankUntouched) {
  VideoProcessor processor(1, 0);
  std::int16_t bank[16][16], deblockBank[16][8];
  std::fill_n(&bank[0][0], 16 * 16, std::int16_t{7});
  std::fill_n(&deblockBank[0][0], 16 * 8, std::int16_t{7});
  const std::pair<int, int> kRefused[] = {{0, 7}, {-2, 7}, {7, 7}, {8, -1}, {8, 15}, {INT_MIN, 7}, {8, INT_MAX}};
  for (const auto& [taps, bits] : kRefused) {
    processor.GetFilter(1, 1, bank, taps, bits, 0);
    processor.GetFilterDeblock(deblockBank, taps, bits, 0);
  }
  processor.GetFilter(1, 1, bank, 18, 7, 0);
  processor.GetFilterDeblock(deblockBank, 10, 7, 0);
  const auto isUntouched = [](int tap) { return tap == 7; };
  EXPECT_TRUE(std::all_of(&bank[0][0], &bank[0][0] + 16 * 16, isUntouched));
  EXPECT_TRUE(std::all_of(&deblockBank[0][0], &deblockBank[0][0] + 16 * 8, isUntouched));
}

TEST(FilterSetupDeathTest, UnknownKindEndsTheProcess) {
  VideoProcessor processor(1, 0);
  processor.windowKind = 3;
  EXPECT_EXIT(
      {
        dup2(STDERR_FILENO, STDOUT_FILENO);
        processor.SetEnhanceFilter(EnhanceLaplacian4, 0, 7, 64, 0);
      },
      testing::ExitedWithCode(0), "^Wrong filter type!\n$");
}

TEST(FilterSetup, WrapsQuietlyForAbsurdArguments) {
  for (const unsigned strength : {0x7FFFFFFFu, 0xFFFFFFFFu, 0x80000000u, 0x1555u}) {
    for (const unsigned bits : {0u, 14u, 15u, 31u, 32u, 0xFFFFFFFFu}) {
      const Processor p(new VideoProcessor(1, -17));
      p->SetEnhanceFilter(EnhanceLaplacian8, strength, bits, SHRT_MIN, SHRT_MAX);
      EXPECT_EQ(p->filtersReady, 1);
    }
  }
}

TEST(FilterSetup, DeblockingLevelFillsFourEqualTables) {
  VideoProcessor p(0, 0);
  for (const int level : {0, 21, 255}) {
    EXPECT_EQ(p.InitDeblocker(static_cast<unsigned char>(level)), 0);
    EXPECT_EQ(p.deblockLevel, level);
    const FilterBank expected = reference::MakeDeblockingBank(level, 8, 7);
    for (const bool isVertical : {false, true}) {
      ExpectBank(isVertical ? p.deblockVerticalFilter : p.deblockHorizontalFilter,
                 isVertical ? p.deblockVerticalFilterLanes : p.deblockHorizontalFilterLanes, expected, expected);
    }
  }
}

TEST(FilterSetup, RatiosAreReducedWithoutLimits) {
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

}  // namespace
