// What the command-line tool's settings do, and what it prints of its work.
#include <gtest/gtest.h>

#include <iterator>
#include <nlohmann/json.hpp>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "tool/tool_fixture.h"
#include "vidproc/video_processor.h"

namespace {

using namespace testing_support;

TEST_F(ToolTest, GivesTheSameFramesAtEveryLevel) {
  const Outcome info = Tool("info");
  std::istringstream fields(Lines(info.out).at(2));
  std::vector<std::string> levels{std::istream_iterator<std::string>(fields), {}};
  ASSERT_EQ(levels.at(0), "levels");
  ASSERT_EQ(levels.at(1), "scalar");
  for (std::size_t i = 1; i < levels.size(); ++i) {
    EXPECT_NE(Tool("info --cpu " + levels[i]).out.find("\nlevel in use  " + levels[i] + "\n"), std::string::npos);
  }
  for (const std::string arguments : {"pre --size 72x40 --dither 6", "pre --size 72x40 --adaptive 3 --soften 4",
                                      "nv12 --size 50x30", "pre", "post --size 130x70 --deblock 30 --dither 3"}) {
    SCOPED_TRACE(arguments);
    const std::string scalar = Md5(arguments + " " + kScene + " --cpu scalar");
    for (std::size_t i = 2; i < levels.size(); ++i) {
      EXPECT_EQ(Md5(arguments + " " + kScene + " --cpu " + levels[i]), scalar) << levels[i];
    }
  }
}

TEST_F(ToolTest, LetsEverySettingActOnTheFrames) {
  const std::string plain = Md5("pre --size 72x40 --soften 4 " + kScene);
  const std::string adaptive = Md5("pre --size 72x40 --soften 4 --adaptive 3 " + kScene);
  const std::string longTaps = Md5("pre --size 72x40 --soften 4 --adaptive 3 --taps16 " + kScene);
  EXPECT_EQ(Md5("pre --size 72x40 --soften 4 --luma 64:0 " + kScene), plain);
  EXPECT_EQ(Md5("pre --size 72x40 --soften 4 --adaptive 3 --temporal 80:3 " + kScene), adaptive);
  const struct {
    std::string options;
    const std::string& without;
  } cases[] = {{"--luma 64:9", plain},
               {"--enhance 2", plain},
               {"--dither 4", plain},
               {"--adaptive 3", plain},
               {"--adaptive 3 --temporal 0", adaptive},
               {"--adaptive 3 --motion-smoothing", adaptive},
               {"--adaptive 3 --taps16", adaptive},
               {"--adaptive 3 --taps16 --enhance 2", longTaps}};
  for (const auto& one : cases) {
    EXPECT_NE(Md5("pre --size 72x40 --soften 4 " + one.options + " " + kScene), one.without) << one.options;
  }
}

TEST_F(ToolTest, SeedsTheDitherNoise) {
  ASSERT_EQ(Tool("post " + kScene + " -o a.uyvy").status, 0);
  for (const std::string command : {"pre", "post"}) {
    const std::string seed = command + " a.uyvy --raw uyvy422 --raw-size 96x64 --size 72x40 --dither 4 --seed ";
    EXPECT_EQ(Md5(seed + "2"), Md5(seed + "2")) << command;
    EXPECT_NE(Md5(seed + "1"), Md5(seed + "2")) << command;
  }
}

/// A processor of the library, set up as the tool does it for a change of size from 96x64 to 72x40.
class Processor {
 public:
  Processor(decltype(&PreProcInit) init, unsigned enhance, unsigned dither, unsigned soften) {
    init(&handle, 96, 64, 192, 72, 40, 144, enhance, dither, soften);
  }
  ~Processor() { PreProcCleanup(&handle); }
  Processor(const Processor&) = delete;
  Processor& operator=(const Processor&) = delete;
  VideoProcessor* operator->() const { return static_cast<VideoProcessor*>(handle); }

  void* handle = nullptr;
};

TEST_F(ToolTest, PostProcessesAsTheLibraryDoes) {
  ASSERT_EQ(Tool("post --synthetic-size 96x64 --frames 1 -o in.uyvy").status, 0);
  const struct { unsigned enhance, dither, soften; } cases[] = {{0, 0, 0}, {3, 0, 0}, {0, 4, 0}, {0, 0, 5}, {2, 3, 6}};
  std::set<std::string> results;
  for (const auto& [enhance, dither, soften] : cases) {
    const std::string options = " --enhance " + std::to_string(enhance) + " --dither " + std::to_string(dither) +
                                " --soften " + std::to_string(soften);
    ASSERT_EQ(Tool("post in.uyvy --raw uyvy422 --raw-size 96x64 --size 72x40 -o out.uyvy" + options).status, 0);
    const Processor processor(PostProcInit, enhance, dither, soften);
    processor->ditherSeed = 1;
    std::string in = File("in.uyvy"), out(std::size_t{144} * 40, '\0');
    const auto bytes = [](std::string& frame) { return reinterpret_cast<unsigned char*>(frame.data()); };
    PostProcExecute(processor.handle, bytes(in), bytes(out), 0, 64, 0);
    EXPECT_TRUE(File("out.uyvy") == out) << options;
    results.insert(out);
  }
  EXPECT_EQ(results.size(), std::size(cases)) << "a setting has no effect";
}

TEST_F(ToolTest, PadsAndCropsEqualSizesOfAnyHeight) {
  ASSERT_EQ(Tool("post --synthetic-size 64x37 --frames 3 -o short.uyvy").status, 0);
  const std::string frames = File("short.uyvy");
  constexpr std::size_t kRow = 128;
  std::string tall;
  for (std::size_t frame = 0; frame < 3; ++frame) {
    tall += frames.substr(frame * 37 * kRow, 37 * kRow);
    for (int row = 37; row < 48; ++row) tall += frames.substr((frame * 37 + 36) * kRow, kRow);
  }
  WriteFile(directory / "tall.uyvy", tall);
  ASSERT_EQ(Tool("pre tall.uyvy --raw uyvy422 --raw-size 64x48 -o tall-out.uyvy").status, 0);
  ASSERT_EQ(Tool("pre short.uyvy --raw uyvy422 --raw-size 64x37 -o short-out.uyvy").status, 0);
  const std::string tallOut = File("tall-out.uyvy");
  std::string cropped;
  for (std::size_t frame = 0; frame < 3; ++frame) cropped += tallOut.substr(frame * 48 * kRow, 37 * kRow);
  EXPECT_EQ(File("short-out.uyvy"), cropped);
  EXPECT_NE(cropped, frames);
}

TEST_F(ToolTest, DeblocksTheRealPictureBeforeItScales) {
  const std::string original = Md5("post " + kScene);
  const std::string deblocked = Md5("post " + kScene + " --deblock 30 -o deblocked.y4m");
  EXPECT_NE(deblocked, original);
  EXPECT_EQ(Md5("post " + kScene + " --deblock 30 --size 130x70"), Md5("post deblocked.y4m --size 130x70"));
}

TEST_F(ToolTest, WritesStatisticsAsJsonLines) {
  ASSERT_EQ(Tool("pre " + kScene + " --size 72x40 --adaptive 2 --taps16 --stats stats.jsonl").status, 0);
  const std::vector<std::string> lines = Lines(File("stats.jsonl"));
  ASSERT_EQ(lines.size(), 4U);
  for (std::size_t i = 0; i < lines.size(); ++i) {
    const nlohmann::json line = nlohmann::json::parse(lines[i]);
    EXPECT_EQ(line.at("frame"), i);
    EXPECT_GT(line.at("nanoseconds"), 0);
    EXPECT_EQ(line.at("kernel"), "adaptive_16tap");
  }
}

TEST_F(ToolTest, WatchesTheExposure) {
  const Outcome events = Tool("exposure --synthetic-size 160x96 --plot plot.png");
  EXPECT_EQ(events.status, 0);
  const std::vector<std::string> lines = Lines(events.out);
  ASSERT_GE(lines.size(), 3U) << events.out;
  EXPECT_NE(lines[0].find("settled"), std::string::npos);
  EXPECT_NE(lines[1].find("drifted"), std::string::npos);
  EXPECT_NE(lines[2].find("settled"), std::string::npos);
  EXPECT_EQ(File("plot.png").substr(1, 3), "PNG");

  const std::vector<std::string> json = Lines(Tool("exposure --synthetic-size 160x96 --frames 40 --json").out);
  ASSERT_EQ(json.size(), 40U);
  int settled = 0;
  for (const std::string& line : json) {
    const nlohmann::json sample = nlohmann::json::parse(line);
    EXPECT_GT(sample.at("brightness"), 16);
    EXPECT_LT(sample.at("brightness"), 235);
    settled += sample.at("result") == 0 ? 1 : 0;
  }
  EXPECT_EQ(settled, 1);
}

TEST_F(ToolTest, PrintsAllPhasesOfBothBanks) {
  const std::vector<std::string> lines = Lines(Tool("filters --from 640x480 --to 320x480 --role post").out);
  ASSERT_EQ(lines.size(), 1U + 17 + 17);
  EXPECT_EQ(lines[1], "Horizontal: up 1, down 2, 8 taps");
  EXPECT_EQ(lines[18], "Vertical: up 1, down 1, 4 taps");
  EXPECT_EQ(lines[2], "*  0:    0    0    0   64    0    0    0    0  total 64");
  int used = 0;
  for (const std::string& line : lines) used += line[0] == '*' ? 1 : 0;
  EXPECT_EQ(used, 2) << "both axes only use phase 0";
}

std::vector<int> PrintedTaps(const std::string& line) {
  std::istringstream numbers(line.substr(line.find(':') + 1));
  return {std::istream_iterator<int>(numbers), {}};
}

std::vector<int> Taps(const short* phase, int count) { return {phase, phase + count}; }

TEST_F(ToolTest, PrintsTheBanksOfTheLibrary) {
  const struct {
    unsigned enhance, soften;
    bool longTaps;
  } cases[] = {{0, 0, false}, {3, 0, false}, {0, 5, false}, {0, 5, true}, {3, 5, true}};
  std::set<std::string> listings;
  for (const auto& [enhance, soften, longTaps] : cases) {
    const std::string options =
        " --enhance " + std::to_string(enhance) + " --soften " + std::to_string(soften) + (longTaps ? " --taps16" : "");
    SCOPED_TRACE(options);
    const Outcome outcome = Tool("filters --from 96x64 --to 72x40 --role pre" + options);
    listings.insert(outcome.out);
    const std::vector<std::string> lines = Lines(outcome.out);
    ASSERT_EQ(lines.size(), 1U + 17 + 17);
    const Processor processor(PreProcInit, enhance, 0, soften);
    if (longTaps) {
      processor->SetTaps(1);
      processor->SetEnhanceFilter(EnhanceLaplacian4, enhance, 7, 128, 0);
    }
    for (std::size_t phase = 0; phase < 16; ++phase) {
      EXPECT_EQ(PrintedTaps(lines[2 + phase]), Taps(processor->horizontalFilter[phase], longTaps ? 16 : 8)) << phase;
      EXPECT_EQ(PrintedTaps(lines[19 + phase]), Taps(processor->verticalFilter[phase], longTaps ? 8 : 4)) << phase;
    }
  }
  EXPECT_EQ(listings.size(), std::size(cases)) << "a setting has no effect";
}

}  // namespace
