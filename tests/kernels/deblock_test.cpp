// Deblocking of the 8 x 8 grid with taps, ratios and geometries that no set-up makes, at every level. What set-ups make
// is compared in kernels_test.cpp.
#include "reference/deblock.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string_view>
#include <vector>

#include "support/frame_content.h"
#include "support/kernel_harness.h"

namespace {

using namespace testing_support;
using Bytes = std::vector<std::uint8_t>;

using Deblocking = AtEveryLevel;

Processor MakeDeblocker(int width, int height, std::uint8_t level) {
  Processor p = MakeProcessor(false, {{width, height, width, height}});
  p->InitDeblocker(level);
  return p;
}

TEST_P(Deblocking, EqualsTheReferenceForAnyTapsAndRatio) {
  struct Case {
    std::int16_t taps[8];
    std::int32_t up, down;
  };
  constexpr Case kCases[] = {
      {{10, 17, 24, 26, 24, 17, 10, 0}, 1, 1},    // as a set-up makes them
      {{10, 17, 24, 26, 24, 17, 10, 0}, 2, 1},    // every output on another source
      {{10, 17, 24, 26, 24, 17, 10, 0}, 8, 7},    // some outputs on another source
      {{0, 0, 64, 0, 64, 0, 0, 0}, 1, 1},         // the most that two samples under one weight have room for
      {{0, 0, 65, 0, 65, 0, 0, 0}, 1, 1},         // one more than that
      {{-10, 17, 24, 66, 24, 17, -10, 0}, 1, 1},  // taps below 0
      {{10, 17, 24, 26, 24, 17, 9, 0}, 1, 1},     // not symmetric
      {{10, 17, 24, 26, 24, 17, 10, 5}, 1, 1},    // an eighth tap
  };
  Random random(1);
  Bytes frame, expected;
  for (const Case& c : kCases) {
    for (const std::string_view plain : {"neither", "rows", "columns"}) {
      const Processor p = MakeDeblocker(40, 35, 45);
      p->SetDeblockTestPattern(0);
      p->horizontalUp = c.up;
      p->horizontalDown = c.down;
      reference::DeblockSettings settings = {40, 35, c.up, c.down, 45, false};
      for (std::size_t t = 0; t < 8; ++t) {
        settings.horizontal[t] = plain == "columns" ? kCases[0].taps[t] : c.taps[t];
        settings.vertical[t] = plain == "rows" ? kCases[0].taps[t] : c.taps[t];
        p->deblockHorizontalFilterLanes[0][t][0] = settings.horizontal[t];
        p->deblockVerticalFilterLanes[0][t][0] = settings.vertical[t];
      }
      for (const Content content : {Content::kNoise, Content::kExtreme}) {
        Paint(content, 80, 35, random, frame);
        expected = frame;
        p->srcFrame = frame.data();
        p->Deblock8x8();
        reference::Deblock(settings, expected.data());
        ASSERT_EQ(frame, expected) << "case " << &c - kCases << ", plain " << plain;
      }
    }
  }
}

TEST_P(Deblocking, UnequalSizesAndPaddedRowsAreLeftAlone) {
  for (std::uint32_t VideoProcessor::*field :
       {&VideoProcessor::inStride, &VideoProcessor::outWidth, &VideoProcessor::outHeight}) {
    const Processor p = MakeDeblocker(32, 16, 30);
    (*p).*field += field == &VideoProcessor::inStride ? 4u : 0u - 2u;
    Bytes frame(68 * 16, 128);
    p->srcFrame = frame.data();
    p->Deblock8x8();
    EXPECT_EQ(frame, Bytes(frame.size(), 128)) << "the test pattern would show";
  }
}

RUN_AT_EVERY_LEVEL(Deblocking);

}  // namespace
