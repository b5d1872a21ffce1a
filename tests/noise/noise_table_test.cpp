// The constant data of the dither noise: the statistics of the tile and the properties of the seeds.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <iterator>
#include <set>

#include "vidproc/video_processor.h"

namespace {

constexpr int kSize = 64;
constexpr int kCells = kSize * kSize;

int TileAt(int row, int column) {
  return Spherical_Theta2_Guassian_Scaled_2By3[(row & (kSize - 1)) * kSize + (column & (kSize - 1))];
}

double Mean() {
  double sum = 0;
  for (int cell = 0; cell < kCells; ++cell) sum += Spherical_Theta2_Guassian_Scaled_2By3[cell];
  return sum / kCells;
}

/// Mean product of two samples `down` rows and `right` columns apart, counted from the mean.
double Covariance(int down, int right, bool wrap) {
  const double mean = Mean();
  double sum = 0;
  int pairs = 0;
  for (int row = 0; row < kSize; ++row) {
    for (int column = 0; column < kSize; ++column) {
      const bool isInside = row + down < kSize && column + right >= 0 && column + right < kSize;
      if (!wrap && !isInside) continue;
      sum += (TileAt(row, column) - mean) * (TileAt(row + down, column + right) - mean);
      ++pairs;
    }
  }
  return sum / pairs;
}

TEST(NoiseTile, HasMeanDeviationAndRange) {
  EXPECT_NEAR(Mean(), 0.2, 0.05);
  EXPECT_NEAR(std::sqrt(Covariance(0, 0, true)), 19.6, 0.05);
  const auto [smallest, largest] = std::minmax_element(std::begin(Spherical_Theta2_Guassian_Scaled_2By3),
                                                       std::end(Spherical_Theta2_Guassian_Scaled_2By3));
  EXPECT_EQ(*smallest, -73);
  EXPECT_EQ(*largest, 70);
  const auto odd = std::count_if(std::begin(Spherical_Theta2_Guassian_Scaled_2By3),
                                 std::end(Spherical_Theta2_Guassian_Scaled_2By3), [](int z) { return z % 2 != 0; });
  EXPECT_NEAR(static_cast<double>(odd) / kCells, 1.0 / 3, 0.01);
}

TEST(NoiseTile, NeighboursAreCorrelatedAndNothingElse) {
  struct Case {
    int down, right;
    double expected, tolerance;
  };
  constexpr Case kCases[] = {{0, 1, 0.33, 0.005}, {1, 0, 0.31, 0.005}, {1, 1, 0.13, 0.005}, {1, -1, 0.13, 0.005},
                             {0, 2, 0, 0.005},    {2, 0, 0, 0.005},    {2, 2, 0, 0.005},    {2, -2, 0, 0.005},
                             {1, 2, 0, 0.005},    {2, 1, 0, 0.005},    {1, -2, 0, 0.005},   {2, -1, 0, 0.005},
                             {0, 4, 0, 0.05},     {4, 0, 0, 0.05},     {5, 5, 0, 0.05}};
  const double variance = Covariance(0, 0, true);
  for (const Case& lag : kCases) {
    for (bool wrap : {false, true}) {
      EXPECT_NEAR(Covariance(lag.down, lag.right, wrap) / variance, lag.expected, lag.tolerance)
          << lag.down << " down, " << lag.right << " right" << (wrap ? ", wrapped" : "");
    }
  }
}

TEST(NoiseTile, BeginsAsFixed) {
  constexpr int kBeginnings[2][16] = {{-3, -3, 14, 21, -26, -26, 4, -6, -12, -34, 16, -16, 12, 7, 2, 8},
                                      {-18, 14, 29, 16, 0, -23, -25, -44, -26, -13, 11, 10, 4, 4, 6, 18}};
  for (int row = 0; row < 2; ++row) {
    for (int column = 0; column < 16; ++column) EXPECT_EQ(TileAt(row, column), kBeginnings[row][column]);
  }
}

TEST(NoiseSeeds, AreDistinctAndInRange) {
  EXPECT_EQ(LFSR_SEED_TABLE[0], 0x6C85C15Cu);
  EXPECT_EQ(LFSR_SEED_TABLE[1], 0x2F81CA8Eu);
  EXPECT_EQ(LFSR_SEED_TABLE[2], 0x2A40969Fu);
  EXPECT_EQ(LFSR_SEED_TABLE[3], 0x2B8A1838u);
  const std::set<std::uint32_t> seeds(std::begin(LFSR_SEED_TABLE), std::end(LFSR_SEED_TABLE));
  EXPECT_EQ(seeds.size(), 256u);
  EXPECT_EQ(*seeds.begin(), 0x008B9DA1u);
  EXPECT_EQ(*seeds.rbegin(), 0x7FC6AEF1u);
}

}  // namespace
