// Prints src/noise/noise_tables.cpp: the 64 x 64 noise tile and the generator's seeds. Run only to make them anew.
//
// The tile is white noise on a torus, smoothed by a 3x3 kernel. Only the order of the smoothed samples is kept: the
// k-th smallest becomes the k-th smallest of a list of Gaussian quantiles x, scaled by 2/3 and truncated, which makes
// one value in three odd and fixes mean, deviation and limits. Swaps of two samples, which change none of these, then
// bring the correlations of all lags up to kReach to their targets, both with and without wrapping at the tile's edges.
#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <numeric>
#include <random>
#include <vector>

namespace {

constexpr unsigned kSize = 64;
constexpr unsigned kCells = kSize * kSize;
constexpr int kReach = 3;
constexpr unsigned kSeed = 1;

constexpr double kMean = 0.2;
constexpr double kDeviation = 19.6;
constexpr int kMinimum = -73;
constexpr int kMaximum = 70;
// Rows 0 and 1 of the tile begin with these.
constexpr int kBeginnings[2][16] = {{-3, -3, 14, 21, -26, -26, 4, -6, -12, -34, 16, -16, 12, 7, 2, 8},
                                    {-18, 14, 29, 16, 0, -23, -25, -44, -26, -13, 11, 10, 4, 4, 6, 18}};
constexpr double kKernel[3][3] = {{0.05, 0.14, 0.05}, {0.155, 1.0, 0.155}, {0.05, 0.14, 0.05}};

constexpr std::uint32_t kFirstSeeds[4] = {0x6C85C15C, 0x2F81CA8E, 0x2A40969F, 0x2B8A1838};
constexpr std::uint32_t kSmallestSeed = 0x008B9DA1;
constexpr std::uint32_t kLargestSeed = 0x7FC6AEF1;

using Tile = std::array<int, kCells>;

bool IsGiven(unsigned cell) { return cell / kSize < 2 && cell % kSize < 16; }

// Rows and columns count modulo the tile's size, so that -1 wraps to the last one.
unsigned Wrapped(unsigned row, unsigned column) { return row % kSize * kSize + column % kSize; }

double Quantile(double share) {
  double low = -8, high = 8;
  for (int i = 0; i < 60; ++i) {
    const double middle = (low + high) / 2;
    (0.5 * std::erfc(-middle / std::sqrt(2.0)) < share ? low : high) = middle;
  }
  return low;
}

struct Moments {
  explicit Moments(const std::vector<int>& values) {
    for (int value : values) mean += value / double{kCells};
    for (int value : values) variance += (value - mean) * (value - mean) / kCells;
  }
  double mean = 0, variance = 0;
};

// Ascending values for the free cells; together with the given ones they have the wanted mean, deviation and limits.
std::vector<int> MakeValues() {
  constexpr unsigned kFree = kCells - 32;
  double center = kMean * 1.5, deviation = kDeviation * 1.5;
  std::vector<int> all(kCells);
  std::copy_n(&kBeginnings[0][0], 32, all.begin() + kFree);
  for (int round = 0; round < 20; ++round) {
    for (unsigned k = 0; k < kFree; ++k) {
      const int x = static_cast<int>(std::lround(center + deviation * Quantile((k + 0.5) / kFree)));
      all[k] = std::clamp(x * 2 / 3, kMinimum + 1, kMaximum - 1);
    }
    all[0] = kMinimum;
    all[kFree - 1] = kMaximum;
    const Moments moments(all);
    center += 1.5 * (kMean - moments.mean);
    deviation *= kDeviation / std::sqrt(moments.variance);
  }
  all.resize(kFree);
  return all;
}

Tile MakeSmoothedTile(std::mt19937& random) {
  std::array<double, kCells> white;
  for (double& sample : white) {
    sample = 0;
    for (int i = 0; i < 12; ++i) sample += static_cast<double>(random()) / 4294967296.0;
  }
  std::array<double, kCells> smooth{};
  for (unsigned cell = 0; cell < kCells; ++cell) {
    for (unsigned i = 0; i < 9; ++i) {
      smooth[cell] += kKernel[i / 3][i % 3] * white[Wrapped(cell / kSize + i / 3 - 1, cell % kSize + i % 3 - 1)];
    }
  }
  std::vector<unsigned> order;
  for (unsigned cell = 0; cell < kCells; ++cell) {
    if (!IsGiven(cell)) order.push_back(cell);
  }
  std::sort(order.begin(), order.end(), [&](unsigned a, unsigned b) { return smooth[a] < smooth[b]; });

  const std::vector<int> values = MakeValues();
  Tile tile;
  for (std::size_t k = 0; k < order.size(); ++k) tile[order[k]] = values[k];
  for (unsigned i = 0; i < 32; ++i) tile[Wrapped(i / 16, i % 16)] = kBeginnings[i / 16][i % 16];
  return tile;
}

// The correlations of a tile and their distance from the targets, kept up to date while samples change.
class Correlations {
 public:
  explicit Correlations(const Tile& start) : tile(start) {
    const Moments moments({start.begin(), start.end()});
    mean = moments.mean;
    variance = moments.variance;
    for (int down = 0; down <= kReach; ++down) {
      for (int right = down == 0 ? 1 : -kReach; right <= kReach; ++right) lags.push_back({down, right});
    }
    for (unsigned cell = 0; cell < kCells; ++cell) AddPairs(cell, 0.5);
  }

  const Tile& Current() const { return tile; }

  void Swap(unsigned a, unsigned b) {
    for (unsigned cell : {a, b}) AddPairs(cell, -1);
    std::swap(tile[a], tile[b]);
    for (unsigned cell : {a, b}) AddPairs(cell, 1);
  }

  double Cost() const {
    double cost = 0;
    for (const Lag& lag : lags) {
      const double wrapped = lag.wrapped / (kCells * variance) - lag.Target();
      const double inside = lag.inside / (lag.InsidePairs() * variance) - lag.Target();
      cost += wrapped * wrapped + inside * inside;
    }
    return cost;
  }

 private:
  struct Lag {
    int down, right;
    double wrapped = 0, inside = 0;

    double Target() const {
      if (down > 1 || std::abs(right) > 1) return 0;
      return down == 0 ? 0.33 : right == 0 ? 0.31 : 0.13;
    }
    int InsidePairs() const { return (int{kSize} - down) * (int{kSize} - std::abs(right)); }
  };

  // Counts the products of `cell` with its partners, `weight` times. Exact while no two changed cells are partners.
  void AddPairs(unsigned cell, double weight) {
    for (Lag& lag : lags) {
      for (int sign : {-1, 1}) {
        const unsigned row = cell / kSize + static_cast<unsigned>(sign * lag.down);
        const unsigned column = cell % kSize + static_cast<unsigned>(sign * lag.right);
        const double product = weight * (tile[cell] - mean) * (tile[Wrapped(row, column)] - mean);
        lag.wrapped += product;
        if (row < kSize && column < kSize) lag.inside += product;
      }
    }
  }

  Tile tile;
  double mean, variance;
  std::vector<Lag> lags;
};

bool AreFarApart(unsigned a, unsigned b) {
  const unsigned down = (a / kSize - b / kSize) % kSize, right = (a % kSize - b % kSize) % kSize;
  return std::min(down, kSize - down) > kReach || std::min(right, kSize - right) > kReach;
}

Tile MakeTile(std::mt19937& random) {
  Correlations correlations(MakeSmoothedTile(random));
  double cost = correlations.Cost();
  for (int i = 0; i < 1000000 && cost > 1e-6; ++i) {
    const unsigned a = random() % kCells, b = random() % kCells;
    if (IsGiven(a) || IsGiven(b) || !AreFarApart(a, b)) continue;
    correlations.Swap(a, b);
    const double changed = correlations.Cost();
    if (changed < cost) {
      cost = changed;
    } else {
      correlations.Swap(a, b);
    }
  }
  return correlations.Current();
}

std::vector<std::uint32_t> MakeSeeds(std::mt19937& random) {
  std::vector<std::uint32_t> seeds(std::begin(kFirstSeeds), std::end(kFirstSeeds));
  while (seeds.size() < 254) {
    const std::uint32_t seed = static_cast<std::uint32_t>(random()) >> 1;
    const bool isNew = std::find(seeds.begin(), seeds.end(), seed) == seeds.end();
    if (isNew && seed > kSmallestSeed && seed < kLargestSeed) seeds.push_back(seed);
  }
  for (std::uint32_t seed : {kSmallestSeed, kLargestSeed}) {
    seeds.insert(seeds.begin() + 4 + static_cast<std::ptrdiff_t>(random() % (seeds.size() - 4)), seed);
  }
  return seeds;
}

}  // namespace

int main() {
  std::mt19937 random(kSeed);
  const Tile tile = MakeTile(random);
  std::puts(
      "// Constant data of the dither noise: seeds of the shift register, and the 64 x 64 tile of Gaussian-like "
      "noise.\n"
      "// Made by tools/noise_tables/make_noise_tables.cpp; not to be edited by hand.\n"
      "#include \"vidproc/video_processor.h\"\n\n// clang-format off\nconst std::uint32_t LFSR_SEED_TABLE[256] = {");
  const std::vector<std::uint32_t> seeds = MakeSeeds(random);
  for (std::size_t i = 0; i < seeds.size(); ++i) {
    std::printf("%s0x%08X,%s", i % 8 == 0 ? "  " : "", seeds[i], i % 8 == 7 ? "\n" : " ");
  }
  std::puts("};\n\nconst signed char Spherical_Theta2_Guassian_Scaled_2By3[4096] = {");
  for (std::size_t i = 0; i < tile.size(); ++i) {
    std::printf("%s%d,%s", i % 16 == 0 ? "  " : "", tile[i], i % 16 == 15 ? "\n" : " ");
  }
  std::puts("};\n// clang-format on");
}
