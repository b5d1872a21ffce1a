// The scaling row kernels at every level and in every form against the plain passes over a row: rows of all lengths
// between forbidden pages, banks of every kind and at the bounds of what the byte forms can hold. Those that denoise
// have one form, and banks of one kind: pipeline/model_test.cpp compares them.
#include "reference/rows.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <functional>
#include <numeric>
#include <string>
#include <vector>

#include "kernels/kernel_table.h"
#include "kernels/row_jobs.h"
#include "levels/general_forms.h"
#include "plan/horizontal_row_layout.h"
#include "plan/row_taps.h"
#include "support/kernel_harness.h"

namespace {

using namespace testing_support;
using reference::Row;
using vidproc::kMaxTaps;

constexpr std::uint32_t kCases = 300;

vidproc::ByteRowShape Shape() {
  return vidproc::GeneralFormsOnly() ? vidproc::ByteRowShape{} : vidproc::Kernels().byteRowShape;
}

/// Runs each case at every level and in every form, with the same numbers drawn.
void RunCases(const std::function<void(Random&)>& runCase) {
  for (const KernelForms& forms : AvailableForms()) {
    const FormsInUse inUse(forms);
    for (std::uint32_t seed = 1; seed <= kCases && !testing::Test::HasFailure(); ++seed) {
      SCOPED_TRACE(forms.Name() + ", seed " + std::to_string(seed));
      Random random(seed);
      runCase(random);
    }
  }
}

/// A row with room on both sides, right after a forbidden page or right before one; all around it must survive.
class GuardedRow {
 public:
  GuardedRow(const Row& content, int before, int after, Random& random)
      : start(static_cast<std::size_t>(before)),
        memory(start + content.size() + static_cast<std::size_t>(after), random.OneIn(2) ? Flush::kEnd : Flush::kBegin,
               random) {
    memory.PutRows(content, content.size(), start, content.size());
    memory.Load();
  }
  std::uint8_t* Bytes() { return memory.Live() + start; }
  /// Compares all of the memory with what it was, but for the row itself.
  void ExpectRow(const Row& row) {
    std::copy(row.begin(), row.end(), memory.Expected() + start);
    EXPECT_EQ(memory.FirstDifference(start, std::size_t{1} << 20), "");
  }

 private:
  std::size_t start;
  GuardedMemory memory;
};

/// Rows under a vertical pass, as a caller's frame holds them: nothing may be read before the first or past the last.
GuardedRow PutRowsTogether(const std::vector<Row>& rows, Random& random) {
  Row all;
  for (const Row& row : rows) all.insert(all.end(), row.begin(), row.end());
  const int slack = std::max(0, vidproc::kMinRowBytes - static_cast<int>(rows[0].size()));
  return {all, 0, slack, random};
}

/// The starts of `count` rows that lie together.
std::vector<const std::uint8_t*> RowsOf(GuardedRow& together, int count, int bytes) {
  std::vector<const std::uint8_t*> rows(static_cast<std::size_t>(count));
  for (int r = 0; r < count; ++r) rows.data()[r] = together.Bytes() + r * bytes;
  return rows;
}

Row DrawRow(int bytes, Random& random) {
  Row row;
  Paint(random.Pick({Content::kNoise, Content::kExtreme, Content::kSmooth, Content::kSteps}), bytes, 1, random, row);
  return row;
}

int DrawLength(int step, Random& random) {
  const int samples = random.Pick({random.Between(1, 12), random.Between(13, 140), random.Between(128, 420)});
  return step * samples;
}

using Bank = std::int16_t[16][kMaxTaps];
enum class Weights { kRandom, kLobes, kIdentity, kEqualPair, kSharpened, kBounds };
constexpr Weights kAllWeights[] = {Weights::kRandom,    Weights::kLobes,     Weights::kIdentity,
                                   Weights::kEqualPair, Weights::kSharpened, Weights::kBounds};

/// Totals of positive and of negative taps around the bounds of 16-bit sums of bytes, beside one tap around those of a
/// byte.
void DrawNearBounds(int taps, Random& random, std::int16_t* c) {
  const int largest = random.Between(0, taps - 1);
  int rest[2] = {random.Pick({60, 127, 128, 129}), random.Pick({0, 127, 128, 129})};
  for (int t = 0; t < taps; ++t) {
    int& left = rest[t % 2];
    const int part = random.OneIn(3) ? left : random.Between(0, left);
    left -= part;
    c[t] = static_cast<std::int16_t>(t % 2 == 0 ? part : -part);
  }
  c[largest] = static_cast<std::int16_t>(random.Pick({126, 127, 128, 129, 254, 255}));
}

void DrawPhase(Weights weights, int taps, int shift, Random& random, std::int16_t* c) {
  const int centre = taps / 2 - 1;
  std::fill_n(c, kMaxTaps, std::int16_t{0});
  if (weights == Weights::kBounds) return DrawNearBounds(taps, random, c);
  if (weights == Weights::kRandom) {
    for (int t = 0; t < taps; ++t) c[t] = static_cast<std::int16_t>(random.Between(-300, 300));
    return;
  }
  if (weights == Weights::kEqualPair) {
    c[centre] = c[centre + random.Between(1, taps / 2)] = static_cast<std::int16_t>(random.Pick({32, 64}));
    return;
  }
  c[centre + random.Between(0, 1)] = static_cast<std::int16_t>(1 << shift);
  if (weights == Weights::kIdentity) return;
  const int reach = weights == Weights::kSharpened ? 1 : random.Between(1, taps / 2);
  for (int t = centre + 1 - reach; t <= centre + reach; ++t) {
    // What one tap loses its neighbour towards the middle gains.
    const int part = random.Between(weights == Weights::kSharpened ? -40 : -16, 16);
    c[t] = static_cast<std::int16_t>(c[t] + part);
    const int inner = t <= centre ? t + 1 : t - 1;
    c[inner] = static_cast<std::int16_t>(c[inner] - part);
  }
}

/// Sets some bytes to what makes the sum of the tap largest, or smallest.
void PullToExtremes(std::int16_t coefficient, std::uint8_t* bytes, int count) {
  for (int b = 0; b < count; ++b) {
    if (b % 5 < 2) bytes[b] = (coefficient > 0) == (b % 5 == 0) ? 255 : 0;
  }
}

TEST(RowKernelTest, FilterRowsVertically) {
  RunCases([](Random& random) {
    const int taps = random.Pick({4, 8});
    const int shift = random.Pick({6, 7});
    const int bytes = DrawLength(1, random);
    std::int16_t coefficients[kMaxTaps];
    DrawPhase(random.Pick(kAllWeights), taps, shift, random, coefficients);
    std::vector<Row> rows;
    for (int t = 0; t < taps; ++t) {
      rows.push_back(DrawRow(bytes, random));
      PullToExtremes(coefficients[t], rows.back().data(), bytes);
    }
    GuardedRow source = PutRowsTogether(rows, random);
    GuardedRow out(Row(rows[0].size()), 0, 0, random);
    const std::vector<const std::uint8_t*> sources = RowsOf(source, taps, bytes);

    const vidproc::VerticalTaps plan = vidproc::PlanVerticalTaps(coefficients, taps, Shape());
    vidproc::VerticalRowJob job{&plan, {},    {nullptr, random.OneIn(2) ? sources[0] : nullptr},
                                shift, bytes, out.Bytes()};
    for (int i = 0; i < plan.count; ++i) job.rows[i] = sources.data()[taps / 2 - 1 + plan.row[i]];
    vidproc::Kernels().filterRowsVertically(job);
    out.ExpectRow(reference::FilterVertically(sources, coefficients, shift, bytes));
  });
}

/// Positions along a row: by the ratio of two sizes, from a random start.
std::vector<reference::Place> DrawPlaces(int inputs, int outputs, Random& random) {
  std::vector<reference::Place> places;
  const int offset = random.OneIn(2) ? 0 : random.Between(-400, 400);
  const int coarseness = random.Pick({1, 1, 2, 16});
  for (int k = 0; k < outputs; ++k) {
    int sixteenths = (16 * k * inputs + 8 * (inputs - outputs)) / outputs + offset;
    sixteenths -= sixteenths & (coarseness - 1);
    places.push_back({sixteenths >> 4, sixteenths & 15});
  }
  return places;
}

TEST(RowKernelTest, ScaleRow) {
  RunCases([](Random& random) {
    const int step = random.Pick({1, 2});
    const int taps = random.Pick({8, 16});
    const int shift = random.Pick({6, 7});
    const int inputs = DrawLength(1, random);
    struct Ratio {
      int up, down;
    };
    constexpr Ratio kRatios[] = {{1, 1}, {1, 2}, {2, 1}, {2, 3}, {3, 2}, {3, 4},
                                 {1, 3}, {1, 4}, {1, 8}, {8, 1}, {9, 16}};
    const Ratio ratio = random.OneIn(3) ? Ratio{random.Between(1, 300), inputs} : random.Pick(kRatios);
    const int outputs = std::clamp(inputs * ratio.up / ratio.down, 1, 800);
    Bank bank;
    const Weights weights = random.Pick(kAllWeights);
    for (auto& phase : bank) DrawPhase(weights, taps, shift, random, phase);
    Row in = DrawRow(inputs * step, random);
    for (int i = 0; i + 2 * taps < inputs && random.OneIn(2); i += 2 * taps) {
      // Some outputs meet the extremes of their phase there.
      for (int t = 0; t < taps; ++t) PullToExtremes(bank[i / 2 / taps % 16][t], in.data() + (i + t) * step, step);
    }
    const std::vector<reference::Place> places = DrawPlaces(inputs, outputs, random);
    std::vector<vidproc::PhasePosition> positions(places.size());
    std::transform(places.begin(), places.end(), positions.begin(), [](const reference::Place& place) {
      return vidproc::PhasePosition{place.source, place.phase};
    });

    const vidproc::HorizontalRowLayout layout({bank, taps, shift, positions.data(), outputs, inputs, step, Shape()});
    GuardedRow working(in, vidproc::kRowMargin, vidproc::kRowMargin, random);
    vidproc::Kernels().repeatEdges(working.Bytes(), inputs * step, step);
    GuardedRow out(Row(static_cast<std::size_t>(outputs * step)), 0, 0, random);
    vidproc::Kernels().scaleRow({&layout.Plan(), working.Bytes(), out.Bytes()});
    out.ExpectRow(reference::ScaleHorizontally(in, bank, taps, shift, places, step));
  });
}

}  // namespace
