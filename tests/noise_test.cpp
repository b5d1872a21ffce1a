// Dither noise on its own: the tiles of a processor, and direct calls with every geometry against the reference.
#include "reference/noise.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "kernel_harness.h"

namespace {

using namespace testing_support;

class NoiseTest : public testing::Test {
 protected:
  NoiseTest() : processor(new VideoProcessor(1, 0)) {
    processor->PostProcDitherNoiseLUTCreation(&processor->ditherTable);
  }
  ~NoiseTest() override { vidproc::CapLevel(vidproc::BestLevel()); }

  int Dither(std::uint8_t* source, std::uint8_t* destination, const reference::Noise& noise) {
    return processor->PostProcDitherNoiseUpon2VUY(source, destination, static_cast<unsigned>(noise.pitch),
                                                  static_cast<unsigned short>(noise.width),
                                                  static_cast<unsigned short>(noise.height), noise.seed, 0,
                                                  static_cast<unsigned char>(noise.strength), processor->ditherTable);
  }

  Processor processor;
};

TEST_F(NoiseTest, TilesOfAllStrengths) {
  const std::vector<signed char> expected = reference::MakeNoiseTiles(Spherical_Theta2_Guassian_Scaled_2By3);
  const signed char* tiles = processor->ditherTable;
  EXPECT_EQ(std::vector<signed char>(tiles, tiles + expected.size()), expected);
}

TEST_F(NoiseTest, CreationReplacesATable) {
  processor->ditherTable[0] = 99;
  EXPECT_EQ(processor->PostProcDitherNoiseLUTCreation(&processor->ditherTable), 0);
  EXPECT_EQ(processor->ditherTable[0], Spherical_Theta2_Guassian_Scaled_2By3[0] >> 3);
}

TEST_F(NoiseTest, EqualsReference) {
  for (std::uint32_t seed = 1; seed <= 60; ++seed) {
    Random random(seed);
    reference::Noise noise;
    noise.strength = random.Between(1, 12);
    noise.seed = random.Bits();
    noise.seedTable = LFSR_SEED_TABLE;
    noise.tiles = processor->ditherTable;
    noise.width = static_cast<std::size_t>(random.Between(0, 200));
    noise.height = static_cast<std::size_t>(random.OneIn(3) ? random.Between(0, 3) : random.Between(0, 70));
    noise.pitch =
        reference::NoisePitch(noise.width) + static_cast<std::size_t>(random.OneIn(2) ? random.Between(0, 70) : 0);
    if (random.OneIn(10)) {  // the source's pitch loses its upper bits
      noise.pitch = 65536 + static_cast<std::size_t>(random.Between(0, 900));
      noise.height = 4;
    }
    const std::size_t rows = noise.height == 0 ? 1 : noise.height;
    const std::size_t bytes = (rows - 1) * noise.pitch + reference::NoisePitch(noise.width);
    GuardedMemory source(bytes, Flush::kEnd, random), destination(bytes, Flush::kEnd, random);
    const bool inPlace = random.OneIn(2);
    GuardedMemory& result = inPlace ? source : destination;
    reference::AddNoise(noise, source.Expected(), result.Expected(), bytes);
    for (const vidproc::Level level : AvailableLevels()) {
      vidproc::CapLevel(level);
      source.Load();
      destination.Load();
      EXPECT_EQ(Dither(source.Live(), result.Live(), noise), 0);
      EXPECT_EQ(source.FirstDifference(0, noise.pitch) + destination.FirstDifference(0, noise.pitch), "")
          << vidproc::LevelName(level) << " seed " << seed << " strength " << noise.strength << " " << noise.width
          << "x" << noise.height << " pitch " << noise.pitch << " in place " << inPlace;
    }
    ASSERT_FALSE(HasFailure());
  }
}

TEST_F(NoiseTest, OtherStrengthsAreRefused) {
  std::vector<std::uint8_t> frame(32 * 4, 100);
  for (const int strength : {0, 13, 255}) {
    reference::Noise noise;
    noise.strength = strength;
    noise.width = 16;
    noise.height = 4;
    noise.pitch = 32;
    testing::internal::CaptureStderr();
    EXPECT_EQ(Dither(frame.data(), frame.data(), noise), -1);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "{PostProcDitherNoiseUpon2VUY} Dithering noise strength (=" +
                                                          std::to_string(strength) + ") not currently supported.\n");
    EXPECT_EQ(frame, std::vector<std::uint8_t>(32 * 4, 100));
  }
}

}  // namespace
