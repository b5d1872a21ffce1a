// What the command-line tool reads and writes: frames, their meaning and their times, in every container.
#include <gtest/gtest.h>

#include <array>
#include <string>
#include <vector>

#include "tool/clips.h"
#include "tool/tool_fixture.h"

namespace {

using namespace testing_support;

bool IsSame(AVRational a, AVRational b) { return a.num == b.num && a.den == b.den; }

TEST_F(ToolTest, CarriesFramesWithoutLoss) {
  MakeClip(Path("in.mkv"), {});
  std::string frames;
  for (const std::string& frame : Examine(Path("in.mkv")).frames) frames += frame;
  ASSERT_EQ(frames.size(), 4U * 64 * 48 * 3 / 2);
  EXPECT_TRUE(Made("post in.mkv", "a.yuv") == frames);
  Made("post in.mkv", "a.Y4M");
  Made("post a.Y4M --codec ffv1", "b.MKV");
  EXPECT_TRUE(Made("post b.MKV", "b.yuv") == frames);
  for (const std::string line :
       {"cat b.MKV | vidproc post - -f rawvideo -o - >c.yuv", "vidproc post a.Y4M -o - | vidproc post - -o c.yuv",
        "vidproc post b.yuv --input-res 64x48 -o - | vidproc post -i /dev/stdin -o c.yuv",
        "vidproc post b.MKV -f rawvideo -o /dev/stdout | cat >c.yuv",
        "mkfifo pipe; cat b.MKV >pipe & vidproc post pipe -o c.yuv"}) {
    EXPECT_EQ(Shell(line).status, 0) << line;
    EXPECT_TRUE(File("c.yuv") == frames) << line;
  }
}

TEST_F(ToolTest, WritesH264OfTheAskedQuality) {
  const std::string fine = Made("pre " + kScene + " --crf 10", "fine.mp4");
  const std::string coarse = Made("pre " + kScene + " --crf 40", "coarse.mkv");
  EXPECT_GT(fine.size(), coarse.size());
  EXPECT_EQ(Examine(Path("coarse.mkv")).codec, "h264");
  EXPECT_EQ(Examine(Path("fine.mp4")).frames.size(), 4U);
  Made("pre " + kScene + " --codec mjpeg", "x.avi");
  EXPECT_EQ(Examine(Path("x.avi")).codec, "mjpeg");
}

TEST_F(ToolTest, WritesChecksumsAndNothing) {
  MakeClip(Path("in.mkv"), {});
  ASSERT_EQ(Tool("post in.mkv -o /dev/null --framemd5 sums").status, 0);
  ASSERT_EQ(Tool("post in.mkv -f framemd5 -o again").status, 0);
  EXPECT_EQ(Lines(File("sums")).size(), 9U + 4);
  EXPECT_EQ(File("again"), File("sums"));
  Made("post in.mkv --frames 1", "one.yuv");
  const std::string sum = Shell("md5sum <one.yuv").out.substr(0, 32);
  EXPECT_NE(Lines(File("sums")).at(9).find(sum), std::string::npos) << File("sums");
  EXPECT_EQ(Shell("vidproc post in.mkv -f null -o - | wc -c").out, "0\n");
}

TEST_F(ToolTest, CarriesWhatColoursMean) {
  ClipSettings bt601;
  bt601.range = AVCOL_RANGE_JPEG;
  bt601.matrix = AVCOL_SPC_BT470BG;
  bt601.primaries = AVCOL_PRI_BT470BG;
  bt601.transfer = AVCOL_TRC_SMPTE170M;
  bt601.location = AVCHROMA_LOC_CENTER;
  bt601.sampleAspect = {4, 3};
  ClipSettings bt709;
  bt709.range = AVCOL_RANGE_MPEG;
  bt709.matrix = AVCOL_SPC_BT709;
  bt709.primaries = AVCOL_PRI_BT709;
  bt709.transfer = AVCOL_TRC_BT709;
  bt709.location = AVCHROMA_LOC_LEFT;
  for (const ClipSettings& settings : {bt601, bt709}) {
    MakeClip(Path("in.mkv"), settings);
    for (const std::string name : {"a.mkv", "a.mp4", "b.mkv --codec ffv1"}) {
      SCOPED_TRACE(name);
      const Outcome outcome = Tool("pre in.mkv --size 32x -o " + name);
      EXPECT_EQ(outcome.status, 0);
      EXPECT_EQ(outcome.err, "");
      const ClipFacts facts = Examine(Path(name.substr(0, name.find(' '))));
      EXPECT_EQ(facts.range, settings.range);
      EXPECT_EQ(facts.matrix, settings.matrix);
      EXPECT_EQ(facts.primaries, settings.primaries);
      EXPECT_EQ(facts.transfer, settings.transfer);
      EXPECT_EQ(facts.location, settings.location);
      EXPECT_TRUE(settings.sampleAspect.num == 0 || IsSame(facts.sampleAspect, settings.sampleAspect));
      EXPECT_EQ(facts.width, 32);
      EXPECT_EQ(facts.height, 24);
    }
    const bool isFull = settings.range == AVCOL_RANGE_JPEG;
    const std::string header = Lines(Made("post in.mkv", "a.y4m")).at(0);
    EXPECT_NE(header.find(isFull ? "C420jpeg" : "C420mpeg2"), std::string::npos) << header;
    EXPECT_NE(header.find(isFull ? "COLORRANGE=FULL" : "COLORRANGE=LIMITED"), std::string::npos) << header;
  }
}

TEST_F(ToolTest, TagsAndSaysWhatItAssumes) {
  const struct {
    int width, height;
    std::string words;
    AVColorSpace matrix;
  } cases[] = {{64, 48, "BT.601", AVCOL_SPC_SMPTE170M}, {32, 720, "BT.709", AVCOL_SPC_BT709}};
  for (const auto& one : cases) {
    ClipSettings settings;
    settings.width = one.width;
    settings.height = one.height;
    settings.milliseconds = {0};
    MakeClip(Path("in.mkv"), settings);
    const Outcome outcome = Tool("pre in.mkv --size 32x40 -o out.mkv");
    EXPECT_NE(outcome.err.find("in.mkv does not say what its colours mean; taken and tagged as " + one.words),
              std::string::npos)
        << outcome.err;
    EXPECT_EQ(Examine(Path("out.mkv")).matrix, one.matrix);
    EXPECT_EQ(Examine(Path("out.mkv")).range, AVCOL_RANGE_MPEG);
    EXPECT_EQ(Tool("pre in.mkv --quiet -o out.mkv").err, "");
  }
}

TEST_F(ToolTest, ConvertsRgbByTheRightMatrixAndRange) {
  std::string picture = "P6 16 16 255\n";
  for (int i = 0; i < 256; ++i) picture += i < 128 ? std::string{0, '\xbf', 0} : std::string(3, '\xff');
  Put("in.ppm", picture);
  const std::string frame = Made("post in.ppm", "a.i422");
  const auto at = [&](std::size_t place) { return static_cast<unsigned char>(frame.at(place)); };
  EXPECT_NEAR(at(0), 112, 1);  // BT.601, limited
  EXPECT_NEAR(at(256), 72, 1);
  EXPECT_NEAR(at(256 + 128), 58, 1);
  EXPECT_EQ(at(255), 235);
  EXPECT_NE(Tool("post in.ppm -o b.mkv").err.find("in.ppm is RGB; converted to BT.601, limited range"),
            std::string::npos);
  EXPECT_EQ(Examine(Path("b.mkv")).matrix, AVCOL_SPC_SMPTE170M);
  Made("post in.ppm", "c.png");
  const std::string back = Examine(Path("c.png")).frames.at(0);
  EXPECT_NEAR(static_cast<unsigned char>(back[0]), 0, 2);
  EXPECT_NEAR(static_cast<unsigned char>(back[1]), 0xbf, 2);
  EXPECT_NEAR(static_cast<unsigned char>(back[2]), 0, 2);
  EXPECT_EQ(static_cast<unsigned char>(back.back()), 255);
  // White of full range stays white.
  Put("full.y4m", "YUV4MPEG2 W16 H16 F30:1 C420jpeg XCOLORRANGE=FULL\nFRAME\n" + std::string(256, '\xff') +
                      std::string(128, '\x80'));
  Made("post full.y4m", "white.png");
  EXPECT_EQ(Examine(Path("white.png")).frames.at(0), std::string(768, '\xff'));
  EXPECT_EQ(Made("post full.y4m", "full.yuv"), std::string(256, '\xff') + std::string(128, '\x80'));
}

TEST_F(ToolTest, SaysWhatItCannotKeep) {
  ClipSettings clip;
  clip.format = AV_PIX_FMT_YUV420P10;
  MakeClip(Path("ten.mkv"), clip);
  clip.transfer = AVCOL_TRC_SMPTE2084;
  MakeClip(Path("hdr.mkv"), clip);
  clip = {};
  clip.format = AV_PIX_FMT_YUVA420P;
  MakeClip(Path("alpha.mkv"), clip);
  clip = {};
  clip.soundPackets = 4;
  MakeClip(Path("sound.mkv"), clip);
  clip = {};
  clip.milliseconds = {0, 40, 400, 440, 1000};
  MakeClip(Path("vary.mkv"), clip);
  Put("fields.y4m", "YUV4MPEG2 W16 H16 F25:1 It C420mpeg2\nFRAME\n" + std::string(384, '\x80'));
  const struct {
    std::string arguments, words;
  } cases[] = {
      {"post ten.mkv -o x.mkv", "ten.mkv has 10 bits a sample; reduced to 8"},
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
  ExpectComplaint(Tool("post hdr.mkv -o x.mkv"), 1, {"hdr.mkv", "high dynamic range", "zscale"});
  const std::string ten = Examine(Path("ten.mkv")).frames.at(0), eight = Made("post ten.mkv --frames 1", "x.yuv");
  for (std::size_t i = 0; i < 64 * 48; ++i) {
    const int wide = static_cast<unsigned char>(ten[2 * i]) + 256 * static_cast<unsigned char>(ten[2 * i + 1]);
    ASSERT_NEAR(static_cast<unsigned char>(eight[i]), wide / 4.0, 1) << i;
  }
}

TEST_F(ToolTest, KeepsSoundAndVaryingTimes) {
  ClipSettings clip;
  clip.milliseconds = {0, 40, 400, 440, 1000};
  clip.soundPackets = 50;
  MakeClip(Path("in.mkv"), clip);
  const std::string sound = Examine(Path("in.mkv")).sound;
  ASSERT_EQ(sound.size(), 50U * 320);
  for (const std::string name : {"a.mkv", "a.mov"}) {
    const Outcome outcome = Tool("post in.mkv -q -o " + name);
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_EQ(Examine(Path(name)).milliseconds, clip.milliseconds) << name;
    EXPECT_EQ(Examine(Path(name)).sound, sound) << name;
  }
  ASSERT_EQ(Tool("post in.mkv -q --skip 2 -o b.mkv").status, 0);
  EXPECT_EQ(Examine(Path("b.mkv")).milliseconds, (std::vector<std::int64_t>{0, 40, 600}));
  EXPECT_EQ(Examine(Path("b.mkv")).sound, sound.substr(20 * 320));
}

TEST_F(ToolTest, TurnsWhatIsToBeShownTurned) {
  for (const int rotation : {90, 180, 270}) {
    SCOPED_TRACE(rotation);
    ClipSettings clip;
    clip.rotation = rotation;
    clip.sampleAspect = {2, 1};
    MakeClip(Path("in.mov"), clip);
    ASSERT_EQ(Examine(Path("in.mov")).rotation, rotation == 270 ? -90 : rotation == 180 ? -180 : 90);
    EXPECT_EQ(Tool("post in.mov -q --codec ffv1 -o out.mkv").status, 0);
    const ClipFacts in = Examine(Path("in.mov")), out = Examine(Path("out.mkv"));
    const bool isUpright = rotation == 180;
    EXPECT_EQ(out.width, isUpright ? 64 : 48);
    EXPECT_EQ(out.height, isUpright ? 48 : 64);
    EXPECT_EQ(out.rotation, 0);
    EXPECT_TRUE(IsSame(out.sampleAspect, isUpright ? AVRational{2, 1} : AVRational{1, 2}));
    const std::string& from = in.frames.at(1);
    const std::string& to = out.frames.at(1);
    for (int y = 0; y < out.height; ++y) {
      for (int x = 0; x < out.width; ++x) {
        const int fromX = isUpright ? 63 - x : rotation == 90 ? 63 - y : y;
        const int fromY = isUpright ? 47 - y : rotation == 90 ? x : 47 - x;
        ASSERT_EQ(to[static_cast<std::size_t>(y * out.width + x)], from[static_cast<std::size_t>(fromY * 64 + fromX)])
            << x << " " << y;
      }
    }
  }
}

TEST_F(ToolTest, ReadsAndWritesPictures) {
  MakeClip(Path("in.mkv"), {});
  ASSERT_EQ(Tool("post in.mkv -q -o f%03d.png").status, 0);
  ASSERT_TRUE(fs::exists(Path("f004.png")));
  EXPECT_FALSE(fs::exists(Path("f005.png")));
  for (const std::string number : {"1", "3"}) {
    ASSERT_EQ(Tool("post in.mkv -q --frames " + number + " -o last.png").status, 0);
    EXPECT_EQ(File("last.png"), File("f00" + number + ".png"));
  }
  ASSERT_EQ(Tool("post f%03d.png -q --fps 10 --codec ffv1 --output-csp bgr0 -o again.mkv").status, 0);
  const ClipFacts again = Examine(Path("again.mkv"));
  EXPECT_EQ(again.milliseconds, (std::vector<std::int64_t>{0, 100, 200, 300}));
  const Outcome over = Tool("post f%03d.png -q -o f%03d.png");
  ExpectComplaint(over, 1, {"f001.png", "read"});
}

TEST_F(ToolTest, LeavesSoundAloneThatItCannotDecode) {
  ClipSettings clip;
  clip.soundPackets = 2;
  MakeClip(Path("in.mkv"), clip);
  std::string bytes = File("in.mkv");
  const std::size_t codec = bytes.find("A_PCM/INT/LIT");
  ASSERT_NE(codec, std::string::npos);
  Put("odd.mkv", bytes.replace(codec, 13, "A_XYZ/INT/LIT"));
  EXPECT_EQ(Tool("post odd.mkv -o x.yuv").status, 0);
  EXPECT_EQ(File("x.yuv").size(), 4U * 64 * 48 * 3 / 2);
}

}  // namespace
