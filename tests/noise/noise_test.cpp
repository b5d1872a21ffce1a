// Dither noise as hosts call it: its tables, direct calls with every geometry against the reference, and failures. What
// frames get on their way through a processor is compared in kernels_test.cpp.
#include "reference/noise.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "fuzz/digest.h"
#include "kernels/kernel_table.h"
#include "noise/frame_noise.h"
#include "support/failing_malloc.h"
#include "support/kernel_harness.h"

namespace {

using namespace testing_support;
using Bytes = std::vector<std::uint8_t>;

class NoiseTest : public testing::Test {
 protected:
  NoiseTest() : processor(new VideoProcessor(1, 0)) {
    processor->PostProcDitherNoiseLUTCreation(&processor->ditherTable);
  }

  reference::Noise MakeNoise(int strength, unsigned seed, std::size_t width, std::size_t height, std::size_t pitch) {
    return {strength, seed, LFSR_SEED_TABLE, processor->ditherTable, width, height, pitch};
  }

  int Dither(std::uint8_t* source, std::uint8_t* destination, const reference::Noise& noise) {
    return processor->PostProcDitherNoiseUpon2VUY(
        source, destination, static_cast<unsigned>(noise.pitch), static_cast<unsigned short>(noise.width),
        static_cast<unsigned short>(noise.height), noise.seed, 0, static_cast<unsigned char>(noise.strength),
        const_cast<signed char*>(noise.tiles));
  }

  /// A call that is to fail, say `message` and leave its frame alone; `failing` is the number of the failing malloc.
  void ExpectRefusal(const reference::Noise& noise, int failing, const std::string& message) {
    Bytes frame(64 * 4, 100);
    testing::internal::CaptureStderr();
    int result = 0;
    {
      const FailingMalloc failingMalloc(failing);
      result = Dither(frame.data(), frame.data(), noise);
    }
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "{PostProcDitherNoiseUpon2VUY} " + message + "\n");
    EXPECT_EQ(result, -1);
    EXPECT_EQ(frame, Bytes(64 * 4, 100));
  }

  Processor processor;
};

TEST(NoiseTables, StayAsReleased) {
  fuzzing::Digest tile, seeds;
  for (const signed char cell : Spherical_Theta2_Guassian_Scaled_2By3) tile.Add(cell);
  for (const std::uint32_t seed : LFSR_SEED_TABLE) seeds.Add(seed);
  EXPECT_EQ(tile.Value(), 12728531777052645773u);
  EXPECT_EQ(seeds.Value(), 5837800103119950679u);
}

TEST_F(NoiseTest, TilesOfAllStrengthsReplaceATable) {
  const std::vector<signed char> expected = reference::MakeNoiseTiles(Spherical_Theta2_Guassian_Scaled_2By3);
  processor->ditherTable[0] = 99;
  EXPECT_EQ(processor->PostProcDitherNoiseLUTCreation(&processor->ditherTable), 0);
  const signed char* tiles = processor->ditherTable;
  EXPECT_EQ(std::vector<signed char>(tiles, tiles + expected.size()), expected);
}

TEST_F(NoiseTest, FailedTableReportsAndDropsTheOldOne) {
  testing::internal::CaptureStderr();
  int result = 0;
  {
    const FailingMalloc failing(0);
    result = processor->PostProcDitherNoiseLUTCreation(&processor->ditherTable);
  }
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "{PostProcDitherNoiseLUTCreation} Error on memory allocation: ditherNoiseLUTPtr!\n");
  EXPECT_EQ(result, -1);
  EXPECT_EQ(processor->ditherTable, nullptr);
}

TEST_F(NoiseTest, FailuresAreReportedAndLeaveTheFrame) {
  constexpr int kNone = 99;
  for (const int strength : {8, 13}) {  // memory comes before the strength
    const reference::Noise noise = MakeNoise(strength, 0, 32, 4, 64);
    ExpectRefusal(noise, 0, "Error on memory allocation: noiseBlkPosPtr!");
    ExpectRefusal(noise, 1, "Error on memory allocation: prngByLFSRPtr!");
  }
  for (const int strength : {0, 13, 255}) {
    ExpectRefusal(MakeNoise(strength, 0, 32, 4, 64), kNone,
                  "Dithering noise strength (=" + std::to_string(strength) + ") not currently supported.");
  }
}

TEST_F(NoiseTest, NullPointersAreRefused) {
  Bytes frame(64, 100);
  reference::Noise noise = MakeNoise(8, 0, 16, 2, 32);
  EXPECT_EQ(Dither(nullptr, frame.data(), noise), -1);
  EXPECT_EQ(Dither(frame.data(), nullptr, noise), -1);
  noise.tiles = nullptr;
  EXPECT_EQ(Dither(frame.data(), frame.data(), noise), -1);
  EXPECT_EQ(processor->PostProcDitherNoiseLUTCreation(nullptr), -1);
  EXPECT_EQ(frame, Bytes(64, 100));
}

/// Frames in place, apart and overlapping: blocks of 32 bytes are taken in order.
TEST_F(NoiseTest, EqualsReference) {
  Random random(7);
  const auto draw = [&](int low, int high) { return static_cast<std::size_t>(random.Between(low, high)); };
  for (int round = 0; round < 120; ++round) {
    const std::size_t width = draw(0, 200), rows = random.OneIn(3) ? draw(0, 3) : draw(0, 70);
    const std::size_t pitch = reference::NoisePitch(width) + (random.OneIn(2) ? draw(0, 70) : 0);
    reference::Noise noise = MakeNoise(random.Between(1, 12), random.Bits(), width, rows, pitch);
    if (random.OneIn(10)) noise.width = draw(65521, 65535);  // rounded to whole blocks, these are none
    if (random.OneIn(10)) {                                  // the source's pitch loses its upper bits
      noise.pitch = 65536 + draw(0, 900);
      noise.height = 4;
    }
    const std::size_t bytes = (std::max<std::size_t>(noise.height, 1) - 1) * noise.pitch + reference::NoisePitch(width);
    const std::size_t distance = random.OneIn(3)   ? 0
                                 : random.OneIn(2) ? draw(32, 400)
                                                   : draw(32, static_cast<int>(bytes) + 100);
    const std::size_t from = random.OneIn(2) ? distance : 0, to = distance - from;
    GuardedMemory memory(bytes + distance, Flush::kEnd, random);
    reference::AddNoise(noise, memory.Expected() + from, memory.Expected() + to, bytes);
    for (const vidproc::Level level : AvailableLevels()) {
      const FormsInUse inUse({level, false});
      memory.Load();
      EXPECT_EQ(Dither(memory.Live() + from, memory.Live() + to, noise), 0);
      ASSERT_EQ(memory.FirstDifference(to, noise.pitch), "")
          << vidproc::LevelName(level) << " round " << round << " strength " << noise.strength << " " << noise.width
          << "x" << noise.height << " pitch " << noise.pitch << " from " << from << " to " << to;
    }
  }
}

/// Cuts of any size, in gaps between noise rows and across bands alike, give what the whole frame gives.
TEST_F(NoiseTest, PiecesAddUp) {
  Random random(8);
  const auto field = std::make_unique<vidproc::NoiseField>();
  const reference::Noise noise = MakeNoise(12, 5, 70, 49, 192);
  Bytes source;
  Paint(Content::kNoise, 192, 60, random, source);
  Bytes expected = source;
  reference::AddNoise(noise, source.data(), expected.data(), source.size());
  for (const vidproc::Level level : AvailableLevels()) {
    const FormsInUse inUse({level, false});
    for (const int longest : {60, 99, 2999}) {
      vidproc::StartNoise(*field, noise.tiles, 12, noise.seed, 192, 70, 49);
      Bytes actual = source;
      for (std::size_t at = 0, count = 0; at < actual.size(); at += count) {
        count = std::min(static_cast<std::size_t>(random.Between(0, longest)), actual.size() - at);
        vidproc::Kernels().addNoise(*field, actual.data() + at, at, count);
      }
      EXPECT_EQ(actual, expected) << vidproc::LevelName(level) << ", pieces of up to " << longest;
    }
  }
}

}  // namespace
