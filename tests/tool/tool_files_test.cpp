// What the command-line tool reads and writes: frames and pictures in every format, by file and by pipe.
#include <gtest/gtest.h>

#include <cstdint>
#include <initializer_list>
#include <string>
#include <vector>

#include "tool/tool_fixture.h"

namespace {

using namespace testing_support;

std::string Words(std::initializer_list<std::uint32_t> words) {
  std::string bytes;
  for (const std::uint32_t word : words) {
    for (int shift = 0; shift < 32; shift += 8) bytes += static_cast<char>(word >> shift & 255);
  }
  return bytes;
}

std::string Chunk(const std::string& name, const std::string& content) {
  return name + Words({static_cast<std::uint32_t>(content.size())}) + content;
}

/// One grey 16x16 frame of raw UYVY and a packet of sound that no decoder takes.
std::string AviWithDamagedSound() {
  const auto list = [](const std::string& content) { return Chunk("LIST", content); };
  const std::string noWords(24, '\0');
  const std::string video = Chunk("strh", "vidsUYVY" + Words({0, 0, 0, 1, 30, 0, 1}) + noWords) +
                            Chunk("strf", Words({40, 16, 16, 16 << 16 | 1}) + "UYVY" + Words({512}) + noWords);
  const std::string sound = Chunk("strh", "auds" + Words({0, 0, 0, 0, 1, 48000, 0, 1}) + noWords) +
                            Chunk("strf", Words({2 << 16 | 0x50, 48000, 16000, 16 << 16 | 1}));
  const std::string header = Chunk("avih", Words({33333, 0, 0, 0, 1, 0, 2, 0, 16, 16}) + noWords);
  const std::string data = Chunk("00dc", std::string(512, '\x80')) + Chunk("01wb", std::string(400, 'U'));
  return Chunk("RIFF",
               "AVI " + list("hdrl" + header + list("strl" + video) + list("strl" + sound)) + list("movi" + data));
}

TEST_F(ToolTest, LeavesSoundAlone) {
  WriteFile(directory / "in.avi", AviWithDamagedSound());
  const Outcome outcome = Tool("post in.avi -o x.uyvy");
  EXPECT_EQ(outcome.status, 0) << outcome.err;
  EXPECT_EQ(File("x.uyvy"), std::string(512, '\x80'));
}

TEST_F(ToolTest, CarriesFramesWithoutLoss) {
  const std::string made = Md5("post " + kScene + " -o a.uyvy");
  EXPECT_EQ(Lines(Shell("md5sum a.uyvy").out).at(0).substr(0, 32), made);
  // Equal sizes without settings make the post-processor copy, so these chains only change containers.
  EXPECT_EQ(Md5("post a.uyvy --raw uyvy422 --raw-size 96x64 -o b.y4m"), made);
  EXPECT_EQ(Md5("post b.y4m -o c.mkv"), made);
  EXPECT_EQ(Md5("post c.mkv -o d.uyvy"), made);
  EXPECT_EQ(File("d.uyvy"), File("a.uyvy"));
  EXPECT_EQ(Shell("vidproc post c.mkv -o - | vidproc post - --md5").out.substr(0, 32), made);

  const std::string size = " --size 48x33";
  const std::string planar = Md5("nv12 " + kScene + size + " -o a.nv12");
  EXPECT_EQ(File("a.nv12").size(), 4U * (48 * 33 + 48 * 17));
  EXPECT_EQ(Md5("nv12 " + kScene + size + " -o b.y4m"), planar);
  EXPECT_EQ(Md5("nv12 " + kScene + size + " -o b.mkv"), planar);
  const std::string again = Md5("nv12 a.nv12 --raw nv12 --raw-size 48x33 --size 24x16");
  EXPECT_EQ(Md5("nv12 b.y4m --size 24x16"), again);
  EXPECT_EQ(Md5("nv12 b.mkv --size 24x16"), again);
}

TEST_F(ToolTest, WritesMp4ThatItReadsAgain) {
  ASSERT_EQ(Tool("pre " + kScene + " --size 64x48 -o x.mp4").status, 0);
  const Outcome again = Tool("post x.mp4 --md5");
  EXPECT_EQ(again.out.substr(34), "4 frames of 64x48 uyvy422\n") << again.err;
}

TEST_F(ToolTest, CarriesRateAndPixelShape) {
  const std::string frame = "FRAME\n" + std::string(std::size_t{16} * 12 * 2, '\x60');
  const std::string header = "YUV4MPEG2 W16 H12 F30000:1001 Ip A4:3 C422 XCOLORRANGE=LIMITED";
  WriteFile(directory / "in.y4m", header + "\n" + frame + frame + frame);
  ASSERT_EQ(Tool("post in.y4m -o x.mkv").status, 0);
  ASSERT_EQ(Tool("post x.mkv -o same.y4m").status, 0);
  EXPECT_EQ(File("same.y4m"), File("in.y4m"));
  ASSERT_EQ(Tool("post x.mkv --size 8x12 -o narrow.y4m").status, 0);
  EXPECT_EQ(Lines(File("narrow.y4m")).at(0), "YUV4MPEG2 W8 H12 F30000:1001 Ip A8:3 C422 XCOLORRANGE=LIMITED");
}

TEST_F(ToolTest, KeepsTheDigestApartFromAResultOnStandardOutput) {
  const std::string digest = Md5("post " + kScene);
  for (const std::string result : {"-o -", "--stats -", "--compare -"}) {
    const Outcome outcome = Tool("post " + kScene + " --md5 " + result);
    EXPECT_EQ(outcome.status, 0) << result;
    EXPECT_EQ(outcome.err.substr(0, 32), digest) << result;
    EXPECT_EQ(outcome.out.find(digest), std::string::npos) << result;
  }
}

TEST_F(ToolTest, ConvertsFullRangeAndSaysSo) {
  std::string white = "YUV4MPEG2 W16 H16 F30:1 C420jpeg XCOLORRANGE=FULL\nFRAME\n" + std::string(256, '\xff');
  WriteFile(directory / "full.y4m", white + std::string(128, '\x80'));
  for (const std::string command : {"post full.y4m -o x.uyvy", "nv12 full.y4m -o x.nv12"}) {
    const Outcome outcome = Tool(command);
    EXPECT_EQ(outcome.status, 0) << command;
    EXPECT_NE(outcome.err.find("full.y4m is full range"), std::string::npos) << outcome.err;
  }
  EXPECT_EQ(File("x.uyvy").substr(0, 4), "\x80\xeb\x80\xeb");
  // A picture is full range as well, so white has to survive both ways.
  ASSERT_EQ(Tool("post full.y4m -o white.png").status, 0);
  ASSERT_EQ(Tool("post white.png -o white.uyvy").status, 0);
  EXPECT_EQ(File("white.uyvy"), File("x.uyvy"));
  EXPECT_EQ(File("x.nv12"), std::string(256, '\xeb') + std::string(128, '\x80'));
}

TEST_F(ToolTest, CutsAtTheNumberOfFramesAndDrawsPictures) {
  ASSERT_EQ(Tool("pre --synthetic-size 96x64 --frames 3 --size 48x32 -o x.uyvy --compare c.png").status, 0);
  EXPECT_EQ(File("x.uyvy").size(), 3U * 48 * 32 * 2);
  ASSERT_EQ(Tool("pre x.uyvy --raw uyvy422 --raw-size 48x32 -o x.png").status, 0);
  EXPECT_EQ(Tool("post x.png --md5").out.substr(34), "1 frames of 48x32 uyvy422\n");
  ASSERT_EQ(Tool("filters --from 64x48 --to 48x36 --role pre --plot f.png").status, 0);
  for (const char* name : {"c.png", "x.png", "f.png"}) {
    EXPECT_EQ(File(name).substr(0, 8), "\x89PNG\r\n\x1a\n") << name;
  }
}

}  // namespace
