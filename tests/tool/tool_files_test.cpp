// What the command-line tool reads and writes: frames, their meaning and their times, in every container.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "tool/clips.h"
#include "tool/tool_fixture.h"

namespace {

using namespace testing_support;
using Times = std::vector<std::int64_t>;

constexpr int kWidth = 64, kHeight = 48;
constexpr std::size_t kLuma = std::size_t{kWidth} * kHeight, kBytes = kLuma * 3 / 2;

class ToolFilesTest : public ToolTest {
 protected:
  void SetUp() override {
    ToolTest::SetUp();
    Put("in.yuv", frames);
  }
  const std::string frames = RawFrames({VIDPROC_FORMAT_I420, kWidth, kHeight, VIDPROC_SITING_LEFT}, 4);
  const std::string raw = "post in.yuv --input-res 64x48 ";
};

TEST_F(ToolFilesTest, CarriesFramesWithoutLoss) {
  Made(raw, "a.Y4M");
  Made("post a.Y4M --codec ffv1", "b.MKV");
  for (const std::string line : {"vidproc post b.MKV -o c.yuv", "cat b.MKV | vidproc post - -f rawvideo -o - >c.yuv",
                                 "vidproc post a.Y4M -o - | vidproc post - -o c.yuv",
                                 "vidproc post b.MKV -f rawvideo -o /dev/stdout | cat >c.yuv",
                                 "vidproc post in.yuv --input-res 64x48 -o - | vidproc post -i /dev/stdin -o c.yuv",
                                 "mkfifo pipe; cat b.MKV >pipe & vidproc post pipe -o c.yuv"}) {
    EXPECT_EQ(Shell("rm -f c.yuv; " + line).status, 0) << line;
    EXPECT_TRUE(File("c.yuv") == frames) << line;
  }
  EXPECT_TRUE(Made(raw + "--skip 1 --frames 2", "d.yuv") == frames.substr(kBytes, 2 * kBytes));
  EXPECT_TRUE(Made("post b.MKV --seek 3 --frames 9", "d.yuv") == frames.substr(3 * kBytes));
  ExpectComplaint(Tool("post b.MKV --skip 4 -o d.yuv"), 1, {"b.MKV", "4 frames"});
}

TEST_F(ToolFilesTest, EncodesAsAsked) {
  EXPECT_GT(Made("pre " + kScene + " --crf 10", "fine.mp4").size(),
            Made("pre " + kScene + " --crf 40", "coarse.mkv").size());
  Made("pre " + kScene + " --codec mjpeg", "x.avi");
  Made("post --synthetic-size 2x2 --frames 3 --codec ffv1", "tiny.mkv");
  EXPECT_EQ(Made("post tiny.mkv", "tiny.uyvy").size(), 3U * 8);
  EXPECT_EQ(Examine(Path("fine.mp4")).video->codecpar->codec_id, AV_CODEC_ID_H264);
  EXPECT_EQ(Examine(Path("coarse.mkv")).milliseconds.size(), 4U);
  EXPECT_EQ(Examine(Path("x.avi")).video->codecpar->codec_id, AV_CODEC_ID_MJPEG);
}

TEST_F(ToolFilesTest, WritesChecksumsAndNothing) {
  ASSERT_EQ(Tool(raw + "-o /dev/null --framemd5 sums").status, 0);
  EXPECT_EQ(Made(raw + "-f framemd5", "again"), File("sums"));
  EXPECT_EQ(Lines(File("sums")).size(), 9U + 4);
  Put("one.yuv", frames.substr(0, kBytes));
  const std::string sum = Shell("md5sum <one.yuv").out.substr(0, 32);
  EXPECT_NE(Lines(File("sums")).at(9).find(sum), std::string::npos) << File("sums");
  EXPECT_EQ(Shell("vidproc " + raw + "-f null -o - | wc -c").out, "0\n");
}

TEST_F(ToolFilesTest, CarriesWhatColoursMeanAndSaysWhatItAssumes) {
  Put("full.y4m", "YUV4MPEG2 W64 H48 F25:1 A4:3 C420jpeg XCOLORRANGE=FULL\nFRAME\n" + std::string(kBytes, '\x80'));
  Put("large.y4m",
      "YUV4MPEG2 W64 H720 F25:1 A1:1 C420mpeg2\nFRAME\n" + std::string(std::size_t{64} * 720 * 3 / 2, '\x80'));
  static_assert(AVCOL_SPC_BT709 == 1 && AVCOL_SPC_SMPTE170M == 6, "as the numbers of primaries and transfer");
  const std::string full = "C420jpeg XYSCSS=420JPEG XCOLORRANGE=FULL";
  const std::string limited = "C420mpeg2 XYSCSS=420MPEG2 XCOLORRANGE=LIMITED";
  const struct {
    std::string input, assumed, header;
    AVRational aspect;
    int standard;
  } cases[] = {{"full.y4m", "taken and tagged as BT.601", " A4:3 " + full, {4, 3}, AVCOL_SPC_SMPTE170M},
               {"large.y4m", "tagged as BT.709, limited range", " A1:1 " + limited, {1, 1}, AVCOL_SPC_BT709},
               {kScene + " --output-csp yuv420p", "", " A1:1 " + limited, {1, 1}, AVCOL_SPC_BT709}};
  for (const auto& one : cases) {
    const Outcome outcome = Tool("pre " + one.input + " -o a.mkv");
    EXPECT_NE((outcome.err + "\n").find(one.assumed + "\n"), std::string::npos) << outcome.err;
    EXPECT_EQ(Tool("pre " + one.input + " --quiet -o a.y4m").err, "");
    EXPECT_NE(Lines(File("a.y4m")).at(0).find(one.header), std::string::npos) << Lines(File("a.y4m"))[0];
    // With tags nothing is assumed: neither said nor guessed from the size, which is another.
    for (const std::string result : {"b.mkv", "b.mp4", "b.mkv --codec ffv1"}) {
      SCOPED_TRACE(one.input + " " + result);
      EXPECT_EQ(Tool("pre a.mkv --size x40 -o " + result).err, "");
      const ClipFacts facts = Examine(Path(result.substr(0, result.find(' '))));
      const AVCodecParameters& made = *facts.video->codecpar;
      const bool isFull = one.input == "full.y4m";
      EXPECT_EQ(made.color_range, isFull ? AVCOL_RANGE_JPEG : AVCOL_RANGE_MPEG);
      EXPECT_EQ(made.chroma_location, isFull ? AVCHROMA_LOC_CENTER : AVCHROMA_LOC_LEFT);
      EXPECT_EQ(made.color_space, one.standard);
      EXPECT_EQ(made.color_primaries, one.standard);
      EXPECT_EQ(made.color_trc, one.standard);
      EXPECT_EQ(av_cmp_q(facts.video->sample_aspect_ratio, one.aspect), 0);
    }
  }
}

TEST_F(ToolFilesTest, SaysWhatItCannotKeep) {
  std::string wide;
  for (std::size_t i = 0; i < kBytes; ++i) wide += {static_cast<char>(i * 7 & 255), static_cast<char>(1 + i % 2)};
  Put("ten.bin", wide);
  const std::string ten = "post ten.bin --input-csp yuv420p10le --input-res 64x48";
  const std::string eight = Made(ten, "x.yuv");
  for (std::size_t i = 0; i < kBytes; ++i) {
    const int value = static_cast<unsigned char>(wide[2 * i]) + 256 * wide[2 * i + 1];
    ASSERT_NEAR(static_cast<unsigned char>(eight.at(i)), value / 4.0, 1) << i;
  }
  std::string hdr = Made("post " + kScene + " --codec ffv1 --output-csp yuv420p10le", "ten.mkv");
  hdr.at(hdr.find("\x55\xba\x81") + 3) = 16;  // the transfer: PQ
  Put("hdr.mkv", hdr);
  ExpectComplaint(Tool("post hdr.mkv -o x.mkv"), 1, {"hdr.mkv", "high dynamic range", "zscale"});
  Made("post " + kScene + " --codec ffv1 --output-csp yuva420p", "alpha.mkv");
  Put("sound.mkv", MatroskaClip({0}, {frames}, 4));
  Put("vary.mkv", MatroskaClip({0, 40, 400, 440, 1000}, {frames}, 0));
  Put("fields.y4m", "YUV4MPEG2 W16 H16 F25:1 It C420mpeg2\nFRAME\n" + std::string(384, '\x80'));
  const struct {
    std::string arguments, words;
  } cases[] = {
      {ten + " -o x.mkv", "ten.bin has 10 bits a sample; reduced to 8"},
      {"post alpha.mkv -o x.mkv", "alpha.mkv has an alpha channel, which is dropped"},
      {"post sound.mkv -o x.y4m", "x.y4m is without 1 stream of sound"},
      {"post vary.mkv -o x.y4m", "frames do not come at one rate"},
      {"post fields.y4m -o x.mkv", "fields.y4m is interlaced"},
  };
  for (const auto& one : cases) {
    const Outcome outcome = Tool(one.arguments);
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_NE(outcome.err.find(one.words), std::string::npos) << outcome.err;
    EXPECT_EQ(Tool(one.arguments + " -q").err, "");
  }
}

TEST_F(ToolFilesTest, KeepsSoundAndVaryingTimes) {
  const Times times = {0, 40, 400, 440, 1000};
  Put("in.mkv", MatroskaClip(times, {frames.substr(0, kBytes), frames.substr(kBytes, kBytes)}, 50));
  const std::string sound = Examine(Path("in.mkv")).sound;
  ASSERT_EQ(sound.size(), 50U * 320);
  for (const std::string name : {"a.mkv", "a.mov"}) {
    Made("post in.mkv -q", name);
    EXPECT_EQ(Examine(Path(name)).milliseconds, times) << name;
    EXPECT_EQ(Examine(Path(name)).sound, sound) << name;
  }
  Made("post in.mkv -q --skip 2", "b.mkv");
  EXPECT_EQ(Examine(Path("b.mkv")).milliseconds, (Times{0, 40, 600}));
  EXPECT_EQ(Examine(Path("b.mkv")).sound, sound.substr(20 * 320));
  Put("odd.mkv", MatroskaClip(times, {frames.substr(0, kBytes)}, 2, "A_XYZ"));  // sound that it cannot decode
  EXPECT_EQ(Made("post odd.mkv -q", "x.yuv").size(), 5 * kBytes);
}

/// Big-endian, 16 bits behind the point.
std::string Fixed(int value) { return {static_cast<char>(value < 0 ? 0xff : 0), static_cast<char>(value), 0, 0}; }

TEST_F(ToolFilesTest, TurnsWhatIsToBeShownTurned) {
  Put("in.y4m", "YUV4MPEG2 W64 H48 F25:1 A2:1 C420mpeg2\nFRAME\n" + frames.substr(0, kBytes));
  std::string clip = Made("post in.y4m -q --crf 0", "in.mov");
  const std::size_t matrix = clip.find("tkhd") + 44;
  const struct {
    int a, b, c, d;
  } matrices[] = {{1, 0, 0, -1}, {-1, 0, 0, 1}, {-1, 0, 0, -1}, {0, 1, -1, 0},
                  {0, -1, 1, 0}, {0, 1, 1, 0},  {0, -1, -1, 0}};
  for (const auto& [a, b, c, d] : matrices) {
    SCOPED_TRACE(::testing::Message() << a << " " << b << " " << c << " " << d);
    clip.replace(matrix, 20, Fixed(a) + Fixed(b) + Fixed(0) + Fixed(c) + Fixed(d));
    Put("turned.mov", clip);
    const int width = a != 0 ? kWidth : kHeight, height = a != 0 ? kHeight : kWidth;
    std::string expected(kLuma, '\0');
    for (int y = 0; y < kHeight; ++y) {
      for (int x = 0; x < kWidth; ++x) {
        const int toX = a * x + c * y + (a + c < 0 ? width - 1 : 0), toY = b * x + d * y + (b + d < 0 ? height - 1 : 0);
        expected.at(static_cast<std::size_t>(toY * width + toX)) = frames[static_cast<std::size_t>(y * kWidth + x)];
      }
    }
    const std::string made = Made("post turned.mov -q", "out.y4m");
    EXPECT_TRUE(made.starts_with(a != 0 ? "YUV4MPEG2 W64 H48 F25:1 Ip A2:1 " : "YUV4MPEG2 W48 H64 F25:1 Ip A1:2 "));
    EXPECT_TRUE(made.substr(made.find("FRAME\n") + 6, kLuma) == expected);
  }
}

TEST_F(ToolFilesTest, KeepsTheSizeThatAStreamBeginsWith) {
  Made(raw + "-q --size 16x12", "f1.png");
  Put("f2.ppm", "P6 64 48 255\n" + std::string(kLuma * 3, '\x99'));
  Made("post f2.ppm -q", "f2.png");
  fs::copy(Path("f1.png"), Path("f3.png"));
  const Outcome outcome = Tool("post f%d.png -o out.yuv");
  EXPECT_NE(outcome.err.find("f%d.png: the frame size changes from 16x12 to 64x48 at frame 1"), std::string::npos)
      << outcome.err;
  constexpr std::size_t kSmall = 16 * 12 * 3 / 2;
  const std::string made = File("out.yuv");
  ASSERT_EQ(made.size(), 3 * kSmall);
  EXPECT_EQ(made.substr(0, kSmall), made.substr(2 * kSmall));
  EXPECT_EQ(made.substr(kSmall, 16 * 12), std::string(16 * 12, '\x93'));  // 16 + 0x99 * 219 / 255
}

TEST_F(ToolFilesTest, ReadsAndWritesPictures) {
  ASSERT_EQ(Tool(raw + "-q -o f%03d.png").status, 0);
  ASSERT_TRUE(fs::exists(Path("f004.png")));
  EXPECT_FALSE(fs::exists(Path("f005.png")));
  EXPECT_EQ(Made(raw + "-q", "first.png"), File("f001.png"));
  EXPECT_EQ(Made(raw + "-q --frames 3", "third.png"), File("f003.png"));
  Made("post f%03d.png -q --fps 10 --codec ffv1 --output-csp bgr0", "again.mkv");
  EXPECT_EQ(Examine(Path("again.mkv")).milliseconds, (Times{0, 100, 200, 300}));
  ExpectComplaint(Tool("post f%03d.png -q -o f%03d.png"), 1, {"f001.png", "read"});
}

}  // namespace
