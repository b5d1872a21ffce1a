// The same-size temporal filter at every level: its weights, its neighbours, and a first frame into padded rows.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <vector>

#include "support/kernel_harness.h"

namespace {

using Bytes = std::vector<std::uint8_t>;

class TemporalFilter : public testing_support::AtEveryLevel {
 protected:
  /// Segments are as long as the frame is high; there are twice as many as it is wide.
  void Configure(int width, int height, int padding = 0) {
    p = testing_support::MakeProcessor(true, {{width, height, width, height, 0, padding}});
    frameBytes = std::size_t{2} * p->outWidth * p->outHeight;
  }
  void Run(Bytes& source, Bytes& destination) {
    p->srcFrame = source.data();
    p->dstFrame = destination.data();
    p->PreProcTemporalExecute();
  }
  /// A frame that is filtered against `reference`.
  Bytes Filtered(Bytes source, Bytes reference) {
    p->temporalFirstFrame = 1;
    Bytes result(frameBytes);
    Run(reference, result);
    Run(source, result);
    return result;
  }
  Bytes History() const { return Bytes(p->previousFrame, p->previousFrame + frameBytes); }

  testing_support::Processor p;
  std::size_t frameBytes = 0;
};

TEST_P(TemporalFilter, WeightFallsWithTheChange) {
  Configure(16, 32);
  struct Case {
    std::uint8_t strength, shift;
    std::vector<int> weights;  // of the reference, for changes of 0, 1, 2 ...
  };
  const Case cases[] = {
      {80, 3, {80, 78, 70, 58, 40, 18, 0, 0, 0}},
      {80, 0, {80, 80, 79, 77, 75, 72, 69, 65, 60, 55, 49, 42, 35, 27, 19, 10, 0, 0}},
      {80, 4, {80, 75, 60, 35, 0, 0, 0}},
      {80, 8, {80, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 80, 80, 80}},  // the weight returns
      {80, 15, {80, 0, 80, 0, 80}},                                            // squares lose all bits but the last
      {80, 16, {80, 80, 80, 80}},                                              // and that one
      {127, 3, {127, 123, 111, 91, 64, 28, 0, 0}},
      {128, 3, {128, 124, 112, 92, 64, 28, 0, 0}},
      {129, 3, {129, 125, 113, 93, 65, 28, 0, 0}},  // more than the whole: away from the source
      {255, 3, {255, 247, 223, 183, 128, 56, 0, 0}},
  };
  for (const Case& c : cases) {
    p->temporalStrength = c.strength;  // by hand: the setter limits it
    p->temporalShift = c.shift;
    for (int change = 0; change < static_cast<int>(c.weights.size()); ++change) {
      for (int direction : {-1, 1}) {
        const int source = 128, reference = source + direction * change;
        const int weight = c.weights[static_cast<std::size_t>(change)];
        const auto blended = static_cast<std::uint8_t>(((128 - weight) * source + weight * reference + 64) >> 7);
        EXPECT_EQ(Filtered(Bytes(frameBytes, 128), Bytes(frameBytes, static_cast<std::uint8_t>(reference))),
                  Bytes(frameBytes, blended))
            << "strength " << int{c.strength} << ", shift " << int{c.shift} << ", change " << direction * change;
      }
    }
  }
}

TEST_P(TemporalFilter, NeighbourSegmentsRaiseTheMeasureButNeverLowerIt) {
  constexpr int kLength = 16;
  Configure(2, kLength);
  p->SetTemporalFilter(80, 3);
  struct Case {
    int change[4];  // of the four segments
    int left[4];    // of the change in the result
  };
  constexpr Case kCases[] = {
      {{2, 0, 0, 0}, {1, 0, 0, 0}},  // its own measure of 2: a weight of 70
      {{9, 2, 4, 0}, {9, 2, 3, 0}},  // raised to 5
      {{4, 0, 4, 0}, {3, 0, 3, 0}},  // still neighbours, but 4 stays 4
      {{3, 8, 0, 0}, {3, 8, 0, 0}},  // 5, not 4: the first segment is its own upper neighbour
      {{0, 0, 8, 3}, {0, 0, 8, 3}},  // the last one its own lower neighbour
  };
  for (const Case& c : kCases) {
    Bytes source, expected;
    for (int segment = 0; segment < 4; ++segment) {
      source.insert(source.end(), kLength, static_cast<std::uint8_t>(100 + c.change[segment]));
      expected.insert(expected.end(), kLength, static_cast<std::uint8_t>(100 + c.left[segment]));
    }
    EXPECT_EQ(Filtered(source, Bytes(frameBytes, 100)), expected);
  }
}

TEST_P(TemporalFilter, FirstFrameIntoPaddedRowsShowsTheStagingBuffer) {
  constexpr std::size_t kPadding = 8;
  Configure(4, 16, kPadding);
  Bytes source(frameBytes, 33), destination((8 + kPadding) * 16, 99);
  std::fill_n(reinterpret_cast<std::uint8_t*>(p->scratchA), frameBytes, std::uint8_t{5});
  for (int expected : {5, 33}) {
    Run(source, destination);
    for (std::size_t i = 0; i < destination.size(); ++i) ASSERT_EQ(destination[i], i % 16 < 8 ? expected : 99);
    EXPECT_EQ(History(), source);
    EXPECT_EQ(p->temporalFirstFrame, 0);
  }
}

RUN_AT_EVERY_LEVEL(TemporalFilter);

}  // namespace
