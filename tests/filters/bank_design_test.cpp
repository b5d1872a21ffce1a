// Bank design against the reference: resampling, deblocking, and enhancement folded in.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>

#include "filters/deblocking_bank.h"
#include "filters/enhancement.h"
#include "filters/resampling_bank.h"
#include "reference/filter_design.h"
#include "support/frame_content.h"

namespace {

using namespace vidproc::filters;
using reference::FilterBank;

FilterBank AsArray(const Bank& bank) {
  FilterBank array;
  std::copy_n(&bank[0][0], sizeof bank / sizeof bank[0][0], array[0].data());
  return array;
}

FilterBank Resampling(const reference::ResamplingDesign& d) {
  Bank bank = {};
  DesignResamplingBank({d.kind, d.softening, d.lobes}, d.taps, d.precisionBits, bank);
  return AsArray(bank);
}

FilterBank Deblocking(std::uint8_t level, int taps, int precisionBits) {
  std::int16_t bank[kPhases][kDeblockingTaps] = {};
  DesignDeblockingBank(level, taps, precisionBits, bank);
  FilterBank array = {};
  for (std::size_t phase = 0; phase < kPhases; ++phase) std::copy_n(bank[phase], kDeblockingTaps, array[phase].data());
  return array;
}

TEST(BankDesign, ResamplingEqualsReference) {
  // At softening 65 and 14 bits the shortened pi shows in a last digit.
  for (const std::uint32_t kind : {0u, 1u, 2u}) {
    for (const std::uint32_t softening : {0u, 1u, 2u, 3u, 5u, 10u, 13u, 33u, 65u, 240u}) {
      for (const std::uint32_t lobes : {0u, 2u, 3u, 8u}) {
        for (int taps = 2; taps <= 16; taps += 2) {
          for (int bits = 0; bits <= 14; ++bits) {
            const reference::ResamplingDesign design = {kind, softening, lobes, taps, bits};
            ASSERT_EQ(Resampling(design), reference::MakeResamplingBank(design))
                << "kind " << kind << " softening " << softening << " lobes " << lobes << " taps " << taps << " bits "
                << bits;
          }
        }
      }
    }
  }
}

TEST(BankDesign, DeblockingEqualsReference) {
  for (int level = 0; level < 256; ++level) {
    for (int taps = 2; taps <= kDeblockingTaps; taps += 2) {
      for (const int bits : {7, 14}) {
        ASSERT_EQ(Deblocking(static_cast<std::uint8_t>(level), taps, bits),
                  reference::MakeDeblockingBank(level, taps, bits))
            << "level " << level << " taps " << taps << " bits " << bits;
      }
    }
  }
}

TEST(BankDesign, SofteningThatWrapsCountsAsNone) {
  EXPECT_EQ(Resampling({0, 0xFFFFFFF8u, 3, 8, 6}), Resampling({0, 0, 3, 8, 6}));
}

TEST(Enhancement, KernelsFollowTypeAndStrength) {
  using Kernel = std::array<int, 9>;
  const struct {
    std::uint32_t type, strength;
    Kernel kernel;
  } kCases[] = {{0, 1, {0, -1, 0, -1, 20, -1, 0, -1, 0}},
                {1, 3, {-3, -3, -3, -3, 40, -3, -3, -3, -3}},
                {2, 2, {2, -4, 2, -4, 24, -4, 2, -4, 2}},
                {3, 5, {2, -4, 2, -4, 24, -4, 2, -4, 2}},  // unknown: the last kernel stays
                {0, 0x12345, {0, -0x2345, 0, -0x2345, -0x72DC, -0x2345, 0, -0x2345, 0}}};
  EnhancementKernel kernel = {};
  for (const auto& c : kCases) {
    BuildEnhancementKernel(c.type, c.strength, kernel);
    Kernel built;
    std::copy_n(&kernel[0][0], built.size(), built.begin());
    EXPECT_EQ(built, c.kernel) << "type " << c.type;
  }
}

TEST(Enhancement, EqualsReference) {
  testing_support::Random random(5);
  for (int round = 0; round < 2000; ++round) {
    const int taps = 2 * random.Between(1, 8), total = 1 << random.Between(6, 7), most = random.Pick({2, 40});
    Bank bank = {}, enhanced = {};
    for (auto& phase : bank) {
      for (int tap = 0; tap < taps; ++tap) phase[tap] = static_cast<std::int16_t>(random.Between(-most / 2, most));
    }
    EnhancementKernel kernel;
    std::array<int, 3> columnSums = {};
    for (auto& row : kernel) {
      for (std::size_t column = 0; column < 3; ++column) {
        row[column] = static_cast<std::int16_t>(random.Between(-9, 20));
        columnSums[column] += row[column];
      }
    }
    FoldEnhancement(kernel, taps, total, bank, enhanced);
    ASSERT_EQ(AsArray(enhanced), reference::Enhance(AsArray(bank), columnSums, taps, total)) << "round " << round;
  }
}

}  // namespace
