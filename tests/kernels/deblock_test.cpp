// Deblocking of the 8 x 8 grid at every level: step responses, the test pattern, odd sizes.
#include "reference/deblock.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "support/frame_content.h"
#include "support/kernel_harness.h"

namespace {

using Bytes = std::vector<std::uint8_t>;

/// The direction and the component in which a picture steps; block position is counted in its own samples.
struct Axis {
  const char* name;
  bool vertical;
  std::size_t firstByte, step;
};
constexpr Axis kAxes[] = {{"rows", true, 0, 1}, {"Cb", false, 0, 4}, {"Y", false, 1, 2}, {"Cr", false, 2, 4}};

class Deblocking : public testing_support::AtEveryLevel {
 protected:
  void Configure(std::size_t newWidth, std::size_t newHeight, std::uint8_t level, bool testPattern) {
    width = newWidth;
    height = newHeight;
    const int columns = static_cast<int>(width), rows = static_cast<int>(height);
    p = testing_support::MakeProcessor(false, {{columns, rows, columns, rows}});
    p->InitDeblocker(level);
    p->SetDeblockTestPattern(testPattern);
    frame.assign(2 * width * height, 128);
  }
  /// Paints a step between the samples 7 and 8 of the axis, runs, and returns the samples 4 to 11.
  std::vector<int> StepResponse(const Axis& axis, int before, int after) {
    for (std::size_t y = 0; y < height; ++y) {
      for (std::size_t x = axis.firstByte; x < 2 * width; x += axis.step) {
        const std::size_t sample = axis.vertical ? y : x / axis.step;
        frame[y * 2 * width + x] = static_cast<std::uint8_t>(sample < 8 ? before : after);
      }
    }
    Run();
    std::vector<int> response;
    for (std::size_t sample = 4; sample < 12; ++sample) {
      response.push_back(axis.vertical ? frame[sample * 2 * width + 6] : frame[axis.firstByte + sample * axis.step]);
    }
    return response;
  }
  void Run() {
    p->srcFrame = p->dstFrame = frame.data();
    p->Deblock8x8();
  }

  testing_support::Processor p;
  std::size_t width = 0, height = 0;
  Bytes frame;
};

TEST_P(Deblocking, StepAcrossAnEdge) {
  struct Case {
    std::uint8_t level;
    int before, after;
    std::vector<int> response;
  };
  const Case cases[] = {
      // A step of 37 is an edge of the picture at level 21, one of 36 just not: the centre weighs 127, the others 0.
      {21, 100, 137, {100, 100, 100, 100, 137, 137, 137, 137}},
      {21, 100, 136, {100, 99, 99, 99, 135, 135, 135, 136}},
      {21, 137, 100, {137, 137, 137, 137, 100, 100, 100, 100}},
      // Nothing is an edge at levels 48 to 51: taps 10 17 24 26 24 17 10.
      {48, 0, 200, {0, 16, 42, 80, 120, 158, 184, 200}},
      {48, 200, 0, {200, 184, 158, 120, 80, 42, 16, 0}},
      // Above 51 the sensitivity is negative: a step of 255 weighs 1 of 256 at level 52, which rounds to the identity.
      {52, 0, 255, {0, 0, 0, 0, 255, 255, 255, 255}},
  };
  for (const Case& c : cases) {
    for (const Axis& axis : kAxes) {
      Configure(40, 24, c.level, false);
      EXPECT_EQ(StepResponse(axis, c.before, c.after), c.response)
          << axis.name << ", level " << int{c.level} << ", " << c.before << " to " << c.after;
    }
  }
}

TEST_P(Deblocking, EqualsTheReferenceForAnyTapsAndRatio) {
  struct Case {
    std::int16_t taps[8];
    std::int32_t up, down;
  };
  constexpr Case kCases[] = {
      {{10, 17, 24, 26, 24, 17, 10, 0}, 1, 1},
      {{10, 17, 24, 26, 24, 17, 10, 0}, 2, 1},  // every output on another source
      {{10, 17, 24, 26, 24, 17, 10, 0}, 8, 7},
      {{0, 0, 64, 0, 64, 0, 0, 0}, 1, 1},  // the most that two samples under one weight have room for
      {{0, 0, 65, 0, 65, 0, 0, 0}, 1, 1},
      {{-10, 17, 24, 66, 24, 17, -10, 0}, 1, 1},
      {{10, 17, 24, 26, 24, 17, 9, 0}, 1, 1},
      {{10, 17, 24, 26, 24, 17, 10, 5}, 1, 1},
  };
  testing_support::Random random(1);
  Bytes picture;
  for (const Case& c : kCases) {
    for (const char* const plain : {"neither", "rows", "columns"}) {
      Configure(40, 35, 45, false);
      p->horizontalUp = c.up;
      p->horizontalDown = c.down;
      reference::DeblockSettings settings = {40, 35, c.up, c.down, 45, false};
      for (std::size_t t = 0; t < 8; ++t) {
        settings.horizontal[t] = *plain == 'c' ? kCases[0].taps[t] : c.taps[t];
        settings.vertical[t] = *plain == 'r' ? kCases[0].taps[t] : c.taps[t];
        p->deblockHorizontalFilterLanes[0][t][0] = settings.horizontal[t];
        p->deblockVerticalFilterLanes[0][t][0] = settings.vertical[t];
      }
      for (const testing_support::Content content :
           {testing_support::Content::kNoise, testing_support::Content::kExtreme}) {
        testing_support::Paint(content, 80, 35, random, picture);
        frame = picture;
        Run();
        reference::Deblock(settings, picture.data());
        ASSERT_EQ(frame, picture) << "case " << &c - kCases << ", plain " << plain;
      }
    }
  }
}

TEST_P(Deblocking, ReplacesThePictureByTheSmoothedTestPattern) {
  Configure(64, 32, 32, true);
  Run();
  const Bytes once = frame;
  frame.assign(frame.size(), 3);
  Run();
  EXPECT_EQ(frame, once) << "the picture itself must not matter";

  const auto nearSquareEdge = [](std::size_t place, std::size_t size) {
    return place >= 3 && place < size - 3 && (place % 16 < 3 || place % 16 >= 13);
  };
  int changed = 0;
  for (std::size_t y = 0; y < height; ++y) {
    for (std::size_t x = 0; x < width; ++x) {
      const std::uint8_t luma = frame[y * 2 * width + 2 * x + 1];
      const int painted = (x / 16 + y / 16) % 2 == 0 ? 215 : 205;
      ASSERT_EQ(frame[y * 2 * width + 2 * x], 128);
      if (nearSquareEdge(x, width) || nearSquareEdge(y, height)) {
        changed += luma != painted;
      } else {
        ASSERT_EQ(luma, painted) << x << ", " << y;
      }
    }
  }
  EXPECT_GT(changed, 0);
}

TEST_P(Deblocking, UnequalSizesAndPaddedRowsAreLeftAlone) {
  for (std::uint32_t VideoProcessor::*field :
       {&VideoProcessor::inStride, &VideoProcessor::outWidth, &VideoProcessor::outHeight}) {
    Configure(32, 16, 30, true);
    (*p).*field += field == &VideoProcessor::inStride ? 4u : 0u - 2u;
    frame.resize(frame.size() + 4 * height);
    const Bytes before = frame;
    Run();
    EXPECT_EQ(frame, before);
  }
}

RUN_AT_EVERY_LEVEL(Deblocking);

}  // namespace
