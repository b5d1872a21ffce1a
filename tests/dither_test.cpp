// Dither noise at its limits: failures of allocation, amplitudes, seeds, wrapped sizes, overlapping frames, and frames
// handed to the kernel in pieces.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "failing_malloc.h"
#include "passes/noise_field.h"
#include "reference/noise.h"
#include "simd/kernel_table.h"
#include "vidproc/cpu_level.h"
#include "vidproc/video_processor.h"

namespace {

using Bytes = std::vector<std::uint8_t>;

class DitherTest : public testing::Test {
 protected:
  ~DitherTest() override { vidproc::CapLevel(vidproc::BestLevel()); }

  int Dither(std::uint8_t* source, std::uint8_t* destination, unsigned pitch, int width, int height, unsigned seed,
             int strength) {
    return processor.PostProcDitherNoiseUpon2VUY(source, destination, pitch, static_cast<unsigned short>(width),
                                                 static_cast<unsigned short>(height), seed, 0,
                                                 static_cast<unsigned char>(strength), tiles.data());
  }

  /// A flat frame of whole blocks after the noise.
  Bytes DitheredFlat(int width, int height, int value, unsigned seed, int strength) {
    Bytes frame(static_cast<std::size_t>(2 * width * height), static_cast<std::uint8_t>(value));
    EXPECT_EQ(Dither(frame.data(), frame.data(), static_cast<unsigned>(2 * width), width, height, seed, strength), 0);
    return frame;
  }

  reference::Noise MakeNoise(int strength, unsigned seed, std::size_t width, std::size_t height, std::size_t pitch) {
    return {strength, seed, LFSR_SEED_TABLE, tiles.data(), width, height, pitch};
  }

  VideoProcessor processor{1, 0};
  std::vector<signed char> tiles = reference::MakeNoiseTiles(Spherical_Theta2_Guassian_Scaled_2By3);
  Bytes RandomBytes(std::size_t count) {
    Bytes bytes(count);
    for (std::uint8_t& byte : bytes) byte = static_cast<std::uint8_t>(Random());
    return bytes;
  }
  unsigned Random() { return static_cast<unsigned>(engine()); }

  std::mt19937 engine{7};
};

TEST_F(DitherTest, FailedTableReportsAndDropsTheOldOne) {
  signed char* table = nullptr;
  ASSERT_EQ(processor.PostProcDitherNoiseLUTCreation(&table), 0);
  testing::internal::CaptureStderr();
  int result = 0;
  {
    const testing_support::FailingMalloc failing(0);
    result = processor.PostProcDitherNoiseLUTCreation(&table);
  }
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "{PostProcDitherNoiseLUTCreation} Error on memory allocation: ditherNoiseLUTPtr!\n");
  EXPECT_EQ(result, -1);
  EXPECT_EQ(table, nullptr);
}

TEST_F(DitherTest, FailedBuffersReportAndLeaveTheFrame) {
  constexpr const char* kNames[] = {"noiseBlkPosPtr", "prngByLFSRPtr"};
  for (int number = 0; number < 2; ++number) {
    for (const int strength : {8, 13}) {  // memory comes before the strength
      Bytes frame(64 * 4, 100);
      testing::internal::CaptureStderr();
      int result = 0;
      {
        const testing_support::FailingMalloc failing(number);
        result = Dither(frame.data(), frame.data(), 64, 32, 4, 0, strength);
      }
      EXPECT_EQ(testing::internal::GetCapturedStderr(),
                std::string("{PostProcDitherNoiseUpon2VUY} Error on memory allocation: ") + kNames[number] + "!\n");
      EXPECT_EQ(result, -1);
      EXPECT_EQ(frame, Bytes(64 * 4, 100));
    }
  }
}

TEST_F(DitherTest, AmplitudesOfStrengths) {
  struct Case {
    int strength, smallest, largest;
  };
  for (const Case& expected : {Case{1, -1, 0}, Case{4, -3, 2}, Case{8, -5, 4}, Case{12, -7, 6}}) {
    int smallest = 0, largest = 0;
    for (unsigned seed = 0; seed < 16; ++seed) {
      for (const int byte : DitheredFlat(256, 64, 128, seed, expected.strength)) {
        smallest = std::min(smallest, byte - 128);
        largest = std::max(largest, byte - 128);
      }
    }
    EXPECT_EQ(smallest, expected.smallest) << "strength " << expected.strength;
    EXPECT_EQ(largest, expected.largest) << "strength " << expected.strength;
  }
}

TEST_F(DitherTest, LumaClampsAndChromaStays) {
  for (const int value : {0, 1, 254, 255}) {
    const Bytes frame = DitheredFlat(64, 32, value, 3, 12);
    for (std::size_t b = 0; b < frame.size(); ++b) {
      ASSERT_LE(std::abs(frame[b] - value), b % 2 == 0 ? 0 : 7) << "byte " << b << " of " << value;
    }
  }
}

TEST_F(DitherTest, OnlyTheSeedsLowByteCounts) {
  const Bytes frame = DitheredFlat(64, 32, 128, 5, 8);
  EXPECT_EQ(DitheredFlat(64, 32, 128, 5 + 256, 8), frame);
  EXPECT_EQ(DitheredFlat(64, 32, 128, 0xFFFFFF05u, 8), frame);
  EXPECT_NE(DitheredFlat(64, 32, 128, 6, 8), frame);
}

TEST_F(DitherTest, TouchesWholeBlocksOfItsRows) {
  struct Case {
    int width, height;
    std::size_t touchedPixels;
  };
  constexpr std::size_t kPitch = 256, kRows = 24;
  // The rounded width wraps at 16 bits: almost 65536 pixels are none.
  for (const Case& size :
       {Case{100, 20, 112}, Case{112, 20, 112}, Case{1, 1, 16}, Case{65521, 20, 0}, Case{0, 20, 0}, Case{100, 0, 0}}) {
    Bytes frame(kPitch * kRows, 128);
    EXPECT_EQ(Dither(frame.data(), frame.data(), kPitch, size.width, size.height, 1, 12), 0);
    std::size_t rows = 0, pixels = 0;
    for (std::size_t b = 0; b < frame.size(); ++b) {
      if (frame[b] == 128) continue;
      rows = std::max(rows, b / kPitch + 1);
      pixels = std::max(pixels, b % kPitch / 2 + 1);
    }
    // Noise may be 0 in the last pixels.
    EXPECT_LE(pixels, size.touchedPixels);
    EXPECT_GE(pixels + 4, size.touchedPixels) << size.width << "x" << size.height;
    EXPECT_EQ(rows, size.touchedPixels == 0 ? 0 : static_cast<std::size_t>(size.height));
  }
}

TEST_F(DitherTest, OverlappingFramesAreTakenInOrder) {
  constexpr std::size_t kPitch = 128, kWidth = 64, kRows = 20, kMargin = 512;
  const Bytes memory = RandomBytes(kPitch * kRows + 2 * kMargin);
  for (const int distance : {-300, -128, -64, 32, 64, 100, 128, 160, 300}) {
    Bytes expected = memory, actual = memory;
    const reference::Noise noise = MakeNoise(9, 77, kWidth, kRows, kPitch);
    reference::AddNoise(noise, expected.data() + kMargin, expected.data() + kMargin + distance, kPitch * kRows);
    EXPECT_EQ(Dither(actual.data() + kMargin, actual.data() + kMargin + distance, kPitch, kWidth, kRows, 77, 9), 0);
    EXPECT_EQ(actual, expected) << "destination " << distance << " bytes after the source";
  }
}

TEST_F(DitherTest, NullPointersAreRefused) {
  Bytes frame(64, 100);
  EXPECT_EQ(Dither(nullptr, frame.data(), 32, 16, 2, 0, 8), -1);
  EXPECT_EQ(Dither(frame.data(), nullptr, 32, 16, 2, 0, 8), -1);
  EXPECT_EQ(processor.PostProcDitherNoiseUpon2VUY(frame.data(), frame.data(), 32, 16, 2, 0, 0, 8, nullptr), -1);
  EXPECT_EQ(processor.PostProcDitherNoiseLUTCreation(nullptr), -1);
  EXPECT_EQ(frame, Bytes(64, 100));
}

/// Cuts of any size, in gaps between noise rows and across bands alike, give what the whole frame gives.
TEST_F(DitherTest, PiecesAddUp) {
  const auto field = std::make_unique<vidproc::NoiseField>();
  for (int round = 0; round < 40; ++round) {
    const std::size_t width = Random() % 150, height = Random() % 50;
    const std::size_t pitch = reference::NoisePitch(width) + Random() % 3 * 32;
    const Bytes source = RandomBytes(1 + Random() % 12000);
    Bytes expected = source;
    const reference::Noise noise = MakeNoise(1 + round % 12, Random(), width, height, pitch);
    reference::AddNoise(noise, source.data(), expected.data(), source.size());
    const unsigned longest = round % 2 == 0 ? 100 : 3000;
    for (int l = 0; l <= static_cast<int>(vidproc::Level::kNeon); ++l) {
      const auto level = static_cast<vidproc::Level>(l);
      if (!vidproc::IsLevelAvailable(level)) continue;
      vidproc::CapLevel(level);
      vidproc::StartNoise(*field, tiles.data(), static_cast<unsigned>(noise.strength), noise.seed,
                          static_cast<std::uint32_t>(pitch), static_cast<std::uint32_t>(width),
                          static_cast<std::uint32_t>(height));
      Bytes actual = source;
      for (std::size_t at = 0; at < actual.size();) {
        const std::size_t count = std::min<std::size_t>(Random() % longest, actual.size() - at);
        vidproc::Kernels().addNoise(*field, actual.data() + at, at, count);
        at += count;
      }
      ASSERT_EQ(actual, expected) << vidproc::LevelName(level) << " " << width << "x" << height << " pitch " << pitch;
    }
  }
}

/// Rows of 64 KB and more: a row's source lies elsewhere, and the frame's rows may be padded.
TEST_F(DitherTest, WideNoiseReadsItsSourceElsewhere) {
  const auto field = std::make_unique<vidproc::NoiseField>();
  for (const std::size_t width : {32768u, 33000u, 40000u, 65500u, 65535u, 65576u}) {
    constexpr std::size_t kRows = 5;
    const std::size_t rowBytes = width == 40000 ? 3002 : 2 * width, padding = width % 3 * 10;
    Bytes packed = RandomBytes(rowBytes * (width == 40000 ? 150 : kRows));
    const std::size_t stride = rowBytes + padding, rows = packed.size() / rowBytes;
    Bytes actual(stride * rows, 55), expected = actual;
    for (std::size_t y = 0; y < rows; ++y) std::copy_n(&packed[y * rowBytes], rowBytes, &actual[y * stride]);

    const reference::Noise noise = MakeNoise(12, 9, width, kRows, reference::NoisePitch(width));
    reference::AddNoise(noise, packed.data(), packed.data(), packed.size());
    for (std::size_t y = 0; y < rows; ++y) std::copy_n(&packed[y * rowBytes], rowBytes, &expected[y * stride]);
    vidproc::StartNoise(*field, tiles.data(), 12, 9, static_cast<std::uint32_t>(noise.pitch),
                        static_cast<std::uint32_t>(width), kRows);
    vidproc::AddNoiseWhole(*field, actual.data(), rowBytes, stride, rowBytes * rows);
    EXPECT_TRUE(actual == expected) << "width " << width;
  }
}

}  // namespace
