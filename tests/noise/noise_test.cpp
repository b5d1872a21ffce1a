// Dither noise on its own: its tables, which frames get any, direct calls with every geometry against the reference,
// their failures, and frames handed to the kernel in pieces.
#include "reference/noise.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <iterator>
#include <memory>
#include <set>
#include <string>
#include <vector>

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

  std::size_t Draw(int low, int high) { return static_cast<std::size_t>(random.Between(low, high)); }
  Bytes RandomBytes(std::size_t count) {
    Bytes bytes(count);
    for (std::uint8_t& byte : bytes) byte = random.Byte();
    return bytes;
  }

  Processor processor;
  Random random{7};
};

/// Mean product of two of the tile's samples so far apart, counted from the mean; the tile repeats in all directions.
double Covariance(int down, int right, double mean) {
  double sum = 0;
  for (int cell = 0; cell < 4096; ++cell) {
    const int other = (cell / 64 + down) % 64 * 64 + (cell + right + 64) % 64;
    sum += (Spherical_Theta2_Guassian_Scaled_2By3[cell] - mean) * (Spherical_Theta2_Guassian_Scaled_2By3[other] - mean);
  }
  return sum / 4096;
}

TEST(NoiseTables, HaveTheStatedFigures) {
  const std::vector<int> tile(std::begin(Spherical_Theta2_Guassian_Scaled_2By3),
                              std::end(Spherical_Theta2_Guassian_Scaled_2By3));
  double mean = 0;
  for (const int z : tile) mean += z / 4096.0;
  const double variance = Covariance(0, 0, mean);
  EXPECT_NEAR(mean, 0.2, 0.05);
  EXPECT_NEAR(std::sqrt(variance), 19.6, 0.05);
  EXPECT_EQ(std::ranges::min(tile), -73);
  EXPECT_EQ(std::ranges::max(tile), 70);
  EXPECT_EQ(std::vector<int>(tile.begin() + 64, tile.begin() + 68), (std::vector{-18, 14, 29, 16}));
  const struct {
    int down, right;
    double correlation;
  } kLags[] = {{0, 1, 0.33}, {1, 0, 0.31}, {1, 1, 0.13}, {1, -1, 0.13}, {0, 2, 0},
               {2, 0, 0},    {2, 2, 0},    {1, -2, 0},   {2, 1, 0}};
  for (const auto& lag : kLags) {
    EXPECT_NEAR(Covariance(lag.down, lag.right, mean) / variance, lag.correlation, 0.005)
        << lag.down << " " << lag.right;
  }
  const std::set<std::uint32_t> seeds(std::begin(LFSR_SEED_TABLE), std::end(LFSR_SEED_TABLE));
  EXPECT_EQ(seeds.size(), 256u);
  EXPECT_EQ(*seeds.begin(), 0x008B9DA1u);
  EXPECT_EQ(*seeds.rbegin(), 0x7FC6AEF1u);
  EXPECT_EQ(LFSR_SEED_TABLE[0], 0x6C85C15Cu);
}

TEST_F(NoiseTest, FramesGetNoiseByRuleLevelAndTable) {
  using vidproc::NoiseRule;
  constexpr std::uint32_t kNegative = 0xFFFFFFFF;
  const struct {
    NoiseRule rule;
    std::uint32_t level;
    bool hasTable;
    std::uint32_t levelLeft, blocks;
  } kCases[] = {
      {NoiseRule::kNone, 20, true, 20, 0},          {NoiseRule::kSizedByInput, 0, true, 0, 0},
      {NoiseRule::kSizedByInput, 12, true, 12, 2},  {NoiseRule::kSizedByInput, kNegative, true, 12, 2},
      {NoiseRule::kSizedByOutput, 13, true, 12, 3}, {NoiseRule::kSizedByOutput, kNegative, true, kNegative, 0},
      {NoiseRule::kSizedByInput, 20, false, 12, 0}};
  processor->inWidth = 17;
  processor->outWidth = 48;
  signed char* const table = processor->ditherTable;
  for (const auto& c : kCases) {
    SCOPED_TRACE(testing::Message() << "rule " << static_cast<int>(c.rule) << " level " << c.level);
    const auto field = std::make_unique<vidproc::NoiseField>();
    processor->ditherLevel = c.level;
    processor->ditherTable = c.hasTable ? table : nullptr;
    EXPECT_EQ(vidproc::StartFrameNoise(*processor, c.rule, *field), c.blocks > 0);
    EXPECT_EQ(field->blocksPerRow, c.blocks);
    EXPECT_EQ(processor->ditherLevel, c.levelLeft);
  }
  processor->ditherTable = table;
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

TEST_F(NoiseTest, AmplitudesOfStrengths) {
  const struct { int strength, smallest, largest; } kCases[] = {{1, -1, 0}, {4, -3, 2}, {8, -5, 4}, {12, -7, 6}};
  for (const auto& expected : kCases) {
    int smallest = 0, largest = 0;
    for (unsigned seed = 0; seed < 16; ++seed) {
      Bytes frame(2 * 256 * 64, 128);
      EXPECT_EQ(Dither(frame.data(), frame.data(), MakeNoise(expected.strength, seed, 256, 64, 512)), 0);
      for (const int byte : frame) {
        smallest = std::min(smallest, byte - 128);
        largest = std::max(largest, byte - 128);
      }
    }
    EXPECT_EQ(smallest, expected.smallest) << "strength " << expected.strength;
    EXPECT_EQ(largest, expected.largest) << "strength " << expected.strength;
  }
}

TEST_F(NoiseTest, EqualsReference) {
  for (int round = 0; round < 60; ++round) {
    const std::size_t width = Draw(0, 200), rows = random.OneIn(3) ? Draw(0, 3) : Draw(0, 70);
    const std::size_t pitch = reference::NoisePitch(width) + (random.OneIn(2) ? Draw(0, 70) : 0);
    reference::Noise noise = MakeNoise(random.Between(1, 12), random.Bits(), width, rows, pitch);
    if (random.OneIn(10)) noise.width = Draw(65521, 65535);  // rounded to whole blocks, these are none
    if (random.OneIn(10)) {                                  // the source's pitch loses its upper bits
      noise.pitch = 65536 + Draw(0, 900);
      noise.height = 4;
    }
    const std::size_t bytes = (std::max<std::size_t>(noise.height, 1) - 1) * noise.pitch + reference::NoisePitch(width);
    GuardedMemory source(bytes, Flush::kEnd, random), destination(bytes, Flush::kEnd, random);
    const bool inPlace = random.OneIn(2);
    GuardedMemory& result = inPlace ? source : destination;
    reference::AddNoise(noise, source.Expected(), result.Expected(), bytes);
    for (const vidproc::Level level : AvailableLevels()) {
      const FormsInUse inUse({level, false});
      source.Load();
      destination.Load();
      EXPECT_EQ(Dither(source.Live(), result.Live(), noise), 0);
      EXPECT_EQ(source.FirstDifference(0, noise.pitch) + destination.FirstDifference(0, noise.pitch), "")
          << vidproc::LevelName(level) << " round " << round << " strength " << noise.strength << " " << noise.width
          << "x" << noise.height << " pitch " << noise.pitch << " in place " << inPlace;
    }
    ASSERT_FALSE(HasFailure());
  }
}

TEST_F(NoiseTest, OverlappingFramesAreTakenInOrder) {
  constexpr std::size_t kPitch = 128, kRows = 20, kMargin = 512;
  const Bytes memory = RandomBytes(kPitch * kRows + 2 * kMargin);
  for (const int distance : {-300, -128, -64, 32, 64, 100, 128, 160, 300}) {
    Bytes expected = memory, actual = memory;
    const reference::Noise noise = MakeNoise(9, 77, 64, kRows, kPitch);
    reference::AddNoise(noise, expected.data() + kMargin, expected.data() + kMargin + distance, kPitch * kRows);
    EXPECT_EQ(Dither(actual.data() + kMargin, actual.data() + kMargin + distance, noise), 0);
    EXPECT_EQ(actual, expected) << "destination " << distance << " bytes after the source";
  }
}

/// Cuts of any size, in gaps between noise rows and across bands alike, give what the whole frame gives.
TEST_F(NoiseTest, PiecesAddUp) {
  const auto field = std::make_unique<vidproc::NoiseField>();
  for (int round = 0; round < 40; ++round) {
    const std::size_t width = Draw(0, 149), height = Draw(0, 49);
    const std::size_t pitch = reference::NoisePitch(width) + Draw(0, 2) * 32;
    const Bytes source = RandomBytes(Draw(1, 12000));
    Bytes expected = source;
    const reference::Noise noise = MakeNoise(1 + round % 12, random.Bits(), width, height, pitch);
    reference::AddNoise(noise, source.data(), expected.data(), source.size());
    for (const vidproc::Level level : AvailableLevels()) {
      const FormsInUse inUse({level, false});
      vidproc::StartNoise(*field, noise.tiles, static_cast<unsigned>(noise.strength), noise.seed,
                          static_cast<std::uint32_t>(pitch), static_cast<std::uint32_t>(width),
                          static_cast<std::uint32_t>(height));
      Bytes actual = source;
      for (std::size_t at = 0; at < actual.size();) {
        const std::size_t count = std::min(Draw(0, round % 2 == 0 ? 99 : 2999), actual.size() - at);
        vidproc::Kernels().addNoise(*field, actual.data() + at, at, count);
        at += count;
      }
      ASSERT_EQ(actual, expected) << vidproc::LevelName(level) << " " << width << "x" << height << " pitch " << pitch;
    }
  }
}

/// Rows of 64 KB and more: a row's source lies elsewhere, and the frame's rows may be padded.
TEST_F(NoiseTest, WideNoiseReadsItsSourceElsewhere) {
  const auto field = std::make_unique<vidproc::NoiseField>();
  for (const std::size_t width : {32768u, 33000u, 40000u, 65500u, 65535u, 65576u}) {
    constexpr std::size_t kRows = 5;
    const std::size_t rowBytes = width == 40000 ? 3002 : 2 * width, stride = rowBytes + width % 3 * 10;
    const std::size_t rows = width == 40000 ? 150 : kRows;
    Bytes packed = RandomBytes(rowBytes * rows), actual(stride * rows, 55), expected = actual;
    for (std::size_t y = 0; y < rows; ++y) std::copy_n(&packed[y * rowBytes], rowBytes, &actual[y * stride]);

    const reference::Noise noise = MakeNoise(12, 9, width, kRows, reference::NoisePitch(width));
    reference::AddNoise(noise, packed.data(), packed.data(), packed.size());
    for (std::size_t y = 0; y < rows; ++y) std::copy_n(&packed[y * rowBytes], rowBytes, &expected[y * stride]);
    vidproc::StartNoise(*field, noise.tiles, 12, 9, static_cast<std::uint32_t>(noise.pitch),
                        static_cast<std::uint32_t>(width), kRows);
    vidproc::AddNoiseWhole(*field, actual.data(), rowBytes, stride, rowBytes * rows);
    EXPECT_TRUE(actual == expected) << "width " << width;
  }
}

}  // namespace
