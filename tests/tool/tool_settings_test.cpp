// What the command-line tool's settings do to frames: what the library makes of the same settings.
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <iterator>
#include <nlohmann/json.hpp>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "support/api_frames.h"
#include "tool/tool_fixture.h"
#include "vidproc/video_processor.h"

namespace {

using namespace testing_support;
using vidproc::FrameInfo;

constexpr FrameInfo kIn = {VIDPROC_FORMAT_I420, 96, 64, VIDPROC_SITING_LEFT};
constexpr FrameInfo kOut = {VIDPROC_FORMAT_I420, 72, 40, VIDPROC_SITING_LEFT};
const std::string kSizes = " in.yuv --input-res 96x64 --size 72x40 --fit stretch ";

TEST_F(ToolTest, RunsAtEveryLevelOfTheMachine) {
  std::istringstream levels(Lines(Tool("info").out).at(2).substr(std::string("levels").size()));
  std::set<std::string> results;
  for (std::string level; levels >> level;) {
    EXPECT_NE(Tool("info --cpu " + level).out.find("\nlevel in use  " + level + "\n"), std::string::npos) << level;
    results.insert(Made("pre --size 72x40 --dither 6 " + kScene + " --cpu " + level, "x.yuv"));
  }
  EXPECT_EQ(results.size(), 1U);
}

/// What the library makes of frames without gaps. Handle is vidproc::Pre or vidproc::Post.
template <typename Handle, typename Settings>
std::string Processed(const Settings& settings, const std::string& frames) {
  Handle handle(settings);
  TightFrame in(settings.input, 0), out(settings.output, 0);
  std::string made;
  for (std::size_t place = 0; place < frames.size(); place += in.bytes.size()) {
    std::copy_n(frames.data() + place, in.bytes.size(), in.bytes.begin());
    handle.Process(in.Read(), out.Write());
    made.append(out.bytes.begin(), out.bytes.end());
  }
  return made;
}

/// Explicit denoising.
void Set(vidproc::PreOptions& pre, int edge, int softening, int taps, int strength) {
  pre.denoise_auto = 0;
  pre.denoise_edge = edge;
  pre.denoise_softening = softening;
  pre.denoise_taps = taps;
  pre.temporal_strength = strength;
}

TEST_F(ToolTest, PreProcessesAsTheLibraryDoes) {
  const std::string frames = RawFrames(kIn, 3);
  Put("in.yuv", frames);
  const struct {
    std::string arguments;
    std::function<void(vidproc::PreOptions&)> set;
  } cases[] = {
      {"", [](auto&) {}},
      {"--preset screen --taps 8", [](auto& pre) { pre = vidproc::PreOptions("screen"), pre.taps = 8; }},
      {"--denoise auto:250", [](auto& pre) { pre.denoise_auto = 250; }},
      {"--denoise off", [](auto& pre) { pre.denoise_auto = 0; }},
      {"--temporal 90:2", [](auto& pre) { Set(pre, 0, 0, 8, 90), pre.temporal_shift = 2; }},
      {"--denoise 1", [](auto& pre) { Set(pre, 1, 100, 16, 100); }},
      {"--denoise 3:40:8 --temporal off", [](auto& pre) { Set(pre, 3, 40, 8, 0); }},
      {"--denoise 2:90:16:3", [](auto& pre) { Set(pre, 2, 90, 16, 100), pre.denoise_passes = 3; }},
      {"--denoise 1 --motion-smoothing", [](auto& pre) { Set(pre, 1, 100, 16, 100), pre.motion_smoothing = 1; }},
      {"--filter bilinear", [](auto& pre) { pre.filter = VIDPROC_FILTER_BILINEAR; }},
      {"--filter bicubic", [](auto& pre) { pre.filter = VIDPROC_FILTER_CATMULL_ROM; }},
      {"--filter mitchell", [](auto& pre) { pre.filter = VIDPROC_FILTER_MITCHELL; }},
      {"--filter lanczos --taps 8", [](auto& pre) { pre.filter = VIDPROC_FILTER_LANCZOS, pre.taps = 8; }},
      {"--filter area", [](auto& pre) { pre.filter = VIDPROC_FILTER_AREA; }},
      {"--filter gaussian --softening 9", [](auto& pre) { pre.filter = VIDPROC_FILTER_GAUSSIAN, pre.softening = 9; }},
      {"--filter hamming-sinc", [](auto& pre) { pre.filter = VIDPROC_FILTER_HAMMING_SINC; }},
      {"--filter two-sincs --lobes 5", [](auto& pre) { pre.filter = VIDPROC_FILTER_TWO_SINCS, pre.lobes = 5; }},
      {"--alignment corners", [](auto& pre) { pre.alignment = VIDPROC_ALIGNMENT_CORNERS; }},
      {"--sharpen 7", [](auto& pre) { pre.sharpening = 7; }},
      {"--luma 50:-12", [](auto& pre) { pre.luma_gain = 50, pre.luma_offset = -12; }},
  };
  std::set<std::string> results;
  for (const auto& [arguments, set] : cases) {
    vidproc::PreOptions pre("webcam");
    set(pre);
    pre.input = kIn;
    pre.output = kOut;
    const std::string expected = Processed<vidproc::Pre>(pre, frames);
    EXPECT_TRUE(Made("pre" + kSizes + arguments, "out.yuv") == expected) << arguments;
    results.insert(expected);
  }
  EXPECT_EQ(results.size(), std::size(cases)) << "a setting has no effect";
}

TEST_F(ToolTest, PostProcessesEveryFormatAsTheLibraryDoes) {
  const std::string endings[] = {"uyvy", "yuyv", "nv12", "yuv", "i422"};
  const std::string names[] = {"uyvy", "yuyv", "nv12", "yuv420p", "i422"};
  for (std::size_t from = 0; from < std::size(kFormats); ++from) {
    for (std::size_t to = 0; to < std::size(kFormats); ++to) {
      vidproc::PostOptions post("camera");
      post.input = {kFormats[from], 36, 22, VIDPROC_SITING_LEFT};
      post.output = {kFormats[to], 50, 31, VIDPROC_SITING_LEFT};
      post.deblock_level = from == 0 ? 0 : from == 1 ? 21 : 255;
      post.sharpening = static_cast<int>(to);
      std::string options = " --input-res 36x22 --size 50x31 --fit stretch --sharpen " + std::to_string(to);
      if (from > 0) options += " --deblock " + std::to_string(post.deblock_level);
      const std::string frames = RawFrames(post.input, 2), expected = Processed<vidproc::Post>(post, frames);
      Put("in." + endings[from], frames);
      Put("in.bin", frames);
      EXPECT_TRUE(Made("post in." + endings[from] + options, "out." + endings[to]) == expected) << from << " " << to;
      const std::string named = " --input-csp " + names[from] + " -f rawvideo --output-csp " + names[to];
      EXPECT_TRUE(Made("post -i in.bin" + options + named, "out.bin") == expected) << from << " " << to;
    }
  }
}

TEST_F(ToolTest, SeedsTheNoiseOfEveryFrameAndOfTheScene) {
  const std::string frame = RawFrames(kIn, 1);
  Put("in.yuv", frame + frame);
  vidproc::PreOptions pre("none");
  pre.input = kIn;
  pre.output = kOut;
  pre.dither_level = 5;
  std::string expected;
  for (pre.dither_seed = 255; pre.dither_seed != 1; pre.dither_seed = (pre.dither_seed + 1) & 255) {
    expected += Processed<vidproc::Pre>(pre, frame);
  }
  EXPECT_TRUE(Made("pre --preset none --dither 5 --seed 255" + kSizes, "out.yuv") == expected);
  const std::string one = Made("post " + kScene, "a.yuv"), two = Made("post --seed 2 " + kScene, "b.yuv");
  EXPECT_TRUE(Made("post --seed 1 " + kScene, "c.yuv") == one);
  EXPECT_FALSE(one == two);
}

/// A row of a picture whose columns are alike: black, or the brightness of each sixteenth of the input's width.
std::string Sketch(const std::string& picture, std::size_t width, std::size_t row) {
  std::string sketch;
  for (std::size_t x = 0; x < width; x += 8) {
    const int luma = static_cast<unsigned char>(picture[row * width + x + 4]);
    sketch += luma < 30 ? '.' : static_cast<char>('0' + luma / 20);
  }
  return sketch;
}

TEST_F(ToolTest, FitsPicturesOfOtherShapes) {
  std::string frame;  // 64x32: vertical bars of 8 columns, brighter to the right
  for (int i = 0; i < 64 * 32; ++i) frame += static_cast<char>(50 + i % 64 / 8 * 20);
  Put("in.y4m", "YUV4MPEG2 W64 H32 F30:1 Ip A1:1 C420mpeg2\nFRAME\n" + frame + std::string(64 * 32 / 2, '\x80'));
  const struct {
    std::string options, size, aspect, firstRow, middleRow;
  } cases[] = {
      {"--size 64x64", "W64 H32", "A1:1", "23456789", "23456789"},
      {"--size 64x64 --fit shrink", "W64 H32", "A1:1", "23456789", "23456789"},
      {"--size 64x64 --fit pad", "W64 H64", "A1:1", "........", "23456789"},
      {"--size 96x32 --fit pad", "W96 H32", "A1:1", "..23456789..", "..23456789.."},
      {"--size 32x32 --fit crop", "W32 H32", "A1:1", "4567", "4567"},
      {"--size 64x16 --fit crop", "W64 H16", "A1:1", "23456789", "23456789"},
      {"--size 64x64 --fit stretch", "W64 H64", "A2:1", "23456789", "23456789"},
      {"--size x32", "W64 H32", "A1:1", "23456789", "23456789"},
      {"--size x48", "W96 H48", "A1:1", "233455677899", "233455677899"},
      {"--size 33x", "W33 H16", "A1:1", "", ""},
  };
  for (const auto& [options, size, aspect, firstRow, middleRow] : cases) {
    SCOPED_TRACE(options);
    const std::string made = Made("pre in.y4m -q --denoise off " + options, "out.y4m");
    EXPECT_TRUE(made.starts_with("YUV4MPEG2 " + size + " F30:1 Ip " + aspect + " ")) << Lines(made)[0];
    if (firstRow.empty()) continue;
    const std::string picture = made.substr(made.find("FRAME\n") + 6);
    const std::size_t width = std::stoul(size.substr(1)), height = std::stoul(size.substr(size.find('H') + 1));
    EXPECT_EQ(Sketch(picture, width, 0), firstRow);
    EXPECT_EQ(Sketch(picture, width, height / 2), middleRow);
  }
}

TEST_F(ToolTest, WritesStatisticsAsJsonLines) {
  ASSERT_EQ(Tool("pre " + kScene + " --size 72x40 --stats stats.jsonl").status, 0);
  const std::vector<std::string> lines = Lines(File("stats.jsonl"));
  ASSERT_EQ(lines.size(), 4U);
  for (std::size_t i = 0; i < lines.size(); ++i) {
    const nlohmann::json line = nlohmann::json::parse(lines[i]);
    EXPECT_EQ(line.at("frame"), i);
    EXPECT_NEAR(line.at("seconds").get<double>(), static_cast<double>(i) / 30, 1e-6);
    EXPECT_GT(line.at("nanoseconds"), 0);
    EXPECT_TRUE(line.at("noise").is_number());
  }
}

TEST_F(ToolTest, WatchesTheExposure) {
  std::string clip = "YUV4MPEG2 W64 H48 F30:1 C420mpeg2\n";
  for (int frame = 0; frame < 90; ++frame) {
    const char luma = frame < 40 ? '\x78' : '\x50';
    clip += "FRAME\n" + std::string(64 * 48, luma) + std::string(64 * 48 / 2, frame < 20 ? '\x40' : '\xc0');
  }
  Put("in.y4m", clip);
  const std::vector<std::string> events = Lines(Tool("exposure in.y4m").out);
  ASSERT_EQ(events.size(), 3U);
  EXPECT_TRUE(events[1].ends_with("drifted, brightness 80.0")) << events[1];
  const std::vector<std::string> lines = Lines(Tool("exposure in.y4m --json --skip 1").out);
  ASSERT_EQ(lines.size(), 89U);
  std::vector<std::string> names;
  for (std::size_t i = 0; i < lines.size(); ++i) {
    const nlohmann::json sample = nlohmann::json::parse(lines[i]);
    EXPECT_EQ(sample.at("frame"), i);
    EXPECT_NEAR(sample.at("seconds").get<double>(), static_cast<double>(i) / 30, 1e-6);
    EXPECT_EQ(sample.at("brightness"), i < 39 ? 120.0 : 80.0);
    if (sample.at("event") != "none") names.push_back(sample.at("event"));
  }
  EXPECT_EQ(names, (std::vector<std::string>{"settled", "drifted", "settled"}));
}

TEST_F(ToolTest, PrintsTheFiltersOfLuma) {
  const std::vector<std::string> same = Lines(Tool("filters --from 640x480 --to 640x480").out);
  EXPECT_EQ(same.at(1), "no filter: samples stay as they are");
  const std::vector<std::string> half =
      Lines(Tool("filters --from 640x480 --to 320x480 --filter bilinear --taps 8").out);
  ASSERT_EQ(half.size(), 18U);
  EXPECT_EQ(half[1], "Horizontal: up 1, down 2, 8 taps");
  EXPECT_EQ(half[10], "*  8:    0    0   16   48   48   16    0    0  total 128");
  const Outcome steps = Tool("filters --from 640x480 --to 64x480 --taps 8");
  EXPECT_EQ(Lines(steps.out).at(1), "Horizontal halving: up 1, down 2, 8 taps");
  EXPECT_NE(steps.out.find("Horizontal step: up 2, down 5, 8 taps"), std::string::npos) << steps.out;
}

TEST_F(ToolTest, RunsTheOlderObjectAsItIs) {
  const std::string in = RawFrames({VIDPROC_FORMAT_UYVY, 96, 64, VIDPROC_SITING_LEFT}, 1);
  Put("in.uyvy", in);
  std::string source = in, out(std::size_t{144} * 40, '\0');
  auto *const from = reinterpret_cast<unsigned char*>(source.data()), *const to =
                                                                          reinterpret_cast<unsigned char*>(out.data());
  const std::string sizes = " in.uyvy --input-res 96x64 --size 72x40";
  void* handle = nullptr;
  ASSERT_EQ(PreProcInit(&handle, 96, 64, 192, 72, 40, 144, 2, 0, 5), 1);
  PreProcExecute(handle, from, to, 3, false, false, 70, 1, 64, 0);
  PreProcCleanup(&handle);
  EXPECT_TRUE(Made("object pre --enhance 2 --soften 5 --adaptive 3 --temporal 70:1" + sizes, "a.uyvy") == out);
  source = in;
  ASSERT_EQ(PostProcInit(&handle, 96, 64, 192, 72, 40, 144, 0, 0, 4), 1);
  PostProcExecute(handle, from, to, 30, 64, 0);
  PostProcCleanup(&handle);
  EXPECT_TRUE(Made("object post --soften 4 --deblock 30" + sizes, "b.uyvy") == out);
  EXPECT_EQ(Made("object nv12 --size 48x33 " + kScene, "c.nv12").size(), 4U * (48 * 33 + 48 * 17));
}

}  // namespace
