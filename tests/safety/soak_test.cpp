// A camera's stream whose sizes, formats and settings change every few frames, through one handle of each kind as long
// as scripts/soak asks: memory stays flat, and the chain of sums is that of a fresh run.
#include <gtest/gtest.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <string>
#include <vector>

#include "fuzz/checked_frames.h"
#include "support/api_frames.h"
#include "support/frame_content.h"
#include "support/md5.h"
#include "support/resident_memory.h"

namespace {

using namespace testing_support;

constexpr std::size_t kReplayedSettings = 40;
constexpr int kFrames = 4;

struct Size {
  int width, height;
};
constexpr Size kSizes[] = {{160, 90}, {176, 144}, {320, 180}, {322, 181}, {640, 360}};

template <typename Options>
Options DrawSettings(Random& random, const vidproc_frame_info* input) {
  std::uint8_t bytes[64];
  random.Fill(bytes);
  fuzzing::Input drawn(bytes, sizeof(bytes));
  auto options = fuzzing::DrawOptions<Options>(drawn);
  options.luma_gain = 64, options.luma_offset = 0;  // others may be refused
  for (vidproc_frame_info* const info : {&options.input, &options.output}) {
    const Size size = random.Pick(kSizes);
    info->width = size.width, info->height = size.height;
  }
  if (input != nullptr) options.input = *input;
  return options;
}

/// Sums of all frames so far.
struct Chain {
  std::size_t settings = 0;
  std::string last;
  std::vector<std::string> first;  ///< after each of the replayed settings, but no more: memory is to stay flat
};

Chain RunCamera(const std::function<bool(const Chain&)>& goesOn) {
  vidproc::Pre pre;
  vidproc::Post post;
  Md5 sum;
  Chain chain;
  while (goesOn(chain)) {
    Random random(static_cast<std::uint32_t>(chain.settings));
    const auto sent = DrawSettings<vidproc_pre_options>(random, nullptr);
    const auto shown = DrawSettings<vidproc_post_options>(random, &sent.output);
    pre.Configure(sent);
    post.Configure(shown);
    TightFrame camera(sent.input, 128), wire(sent.output, 0), screen(shown.output, 0);
    for (int frame = 0; frame < kFrames; ++frame) {
      const int width = sent.input.width;
      Paint(Content::kDrift, width, static_cast<int>(camera.bytes.size()) / width, random, camera.bytes);
      pre.Process(camera.Read(), wire.Write());
      post.Process(wire.Read(), screen.Write());
      sum.Add(wire.bytes.data(), wire.bytes.size());
      sum.Add(screen.bytes.data(), screen.bytes.size());
    }
    ++chain.settings;
    chain.last = sum.Sum();
    if (chain.settings <= kReplayedSettings) chain.first.push_back(chain.last);
  }
  return chain;
}

TEST(Soak, MemoryIsFlatAndSumsAreReproducible) {
  const char* const asked = std::getenv("VIDPROC_SOAK_SECONDS");
  const std::chrono::seconds seconds(asked != nullptr ? std::atol(asked) : 0);
  const auto begin = std::chrono::steady_clock::now();
  long settled = 0;
  const Chain chain = RunCamera([&](const Chain& sums) {
    const std::size_t settings = sums.settings;
    if (settings == 4 * kReplayedSettings) settled = ResidentKilobytes();
    if (asked != nullptr && settings % 200 == 199) {
      std::printf("%6zu settings of %d frames: %ld KB, sum %s\n", settings, kFrames, ResidentKilobytes(),
                  sums.last.c_str());
    }
    return settings < kReplayedSettings || std::chrono::steady_clock::now() - begin < seconds;
  });
  EXPECT_TRUE(asked == nullptr || settled != 0 || ResidentKilobytes() == 0) << "too short to tell";
  EXPECT_TRUE(settled == 0 || ResidentKilobytes() < settled + settled / 10) << "from " << settled << " KB";
  const Chain again = RunCamera([](const Chain& sums) { return sums.settings < kReplayedSettings; });
  EXPECT_EQ(again.first, chain.first);
}

}  // namespace
