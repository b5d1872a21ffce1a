// The command-line tool as its users meet it: what it says of itself, and how it fails.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <string>
#include <vector>

#include "tool/clips.h"
#include "tool/tool_fixture.h"

namespace {

using namespace testing_support;

TEST_F(ToolTest, AnswersAboutItself) {
  const struct {
    std::string arguments, words;
  } cases[] = {{"--help", "exposure"},         {"pre --help", "--denoise HOW"},
               {"post --help", "--deblock N"}, {"--version", "vidproc 1."},
               {"info", "level in use"},       {"help man", ".SH \"vidproc pre\""},
               {"help bash", "complete "},     {"object pre --help", "--adaptive"},
               {"help man", "\\-\\-framemd5"}, {"help bash", " --output-csp "}};
  for (const auto& one : cases) {
    const Outcome outcome = Tool(one.arguments);
    EXPECT_EQ(outcome.status, 0) << one.arguments;
    EXPECT_NE(outcome.out.find(one.words), std::string::npos) << one.arguments << outcome.out;
    EXPECT_EQ(outcome.err, "") << one.arguments;
  }
  const std::string completion = "vidproc help bash >completion && source ./completion && ";
  const std::string ask = "COMP_WORDS=(vidproc pre --si) COMP_CWORD=2 && _vidproc && echo ${COMPREPLY[@]}";
  EXPECT_EQ(Shell("bash -c '" + completion + ask + "'").out, "--size\n");
}

TEST_F(ToolTest, NamesTheOptionAndItsRangeOnBadUsage) {
  const struct {
    const char* arguments;
    std::vector<std::string> words;
  } cases[] = {
      {"", {"say what to do", "pre", "exposure"}},
      {"frob", {"\"frob\"", "pre", "exposure"}},
      {"pre --frobnicate", {"--frobnicate"}},
      {"pre", {"-o", ".y4m"}},
      {"pre -o x.xyz", {"-o", "x.xyz", ".mkv", "--format"}},
      {"pre -o noending", {"-o", "noending"}},
      {"pre none.mkv -o x.xyz", {"-o", "x.xyz"}},
      {"pre \"\" -o x.y4m", {"--input", "empty"}},
      {"pre -o \"\" --stats s", {"-o", "empty"}},
      {"pre -o x.y4m --compare x.jpg", {"--compare", "x.jpg", ".png"}},
      {"pre -o x.png --compare ./x.png", {"--compare", "./x.png", "-o"}},
      {"pre -o - --stats -", {"--stats", "standard output", "-o"}},
      {"pre -o x.y4m --framemd5 ../$(basename $PWD)/x.y4m", {"--framemd5", "-o"}},
      {"pre --synthetic in.mkv -o x.y4m", {"--synthetic", "in.mkv"}},
      {"exposure --plot x.svg", {"--plot", "x.svg", ".png"}},
      {"exposure --plot -", {"--plot", "standard output"}},
      {"filters --from 64x48 --to 32x24 --plot -", {"--plot", "standard output"}},
      {"filters --from 64x48", {"--to"}},
      {"pre --size 1x240 -o x.y4m", {"--size", "2 to 16384"}},
      {"pre --size 640x0 -o x.y4m", {"--size"}},
      {"pre --size 640x360p -o x.y4m", {"--size", "640x360p"}},
      {"pre --size x -o x.y4m", {"--size"}},
      {"pre --size 99999999999x2 -o x.y4m", {"--size"}},
      {"pre --size 4294967936x360 -o x.y4m", {"--size"}},
      {"pre --fit squeeze -o x.y4m", {"--fit", "shrink", "crop"}},
      {"pre --synthetic-size 640x -o x.y4m", {"--synthetic-size"}},
      {"pre --synthetic-size 96x63 -o x.mp4", {"--size", "even", "96x63"}},
      {"pre --dither 13 -o x.y4m", {"--dither", "0 to 12"}},
      {"pre --dither -1 -o x.y4m", {"--dither", "0 to 12"}},
      {"pre --dither 3x -o x.y4m", {"--dither", "3x"}},
      {"pre --sharpen 17 -o x.y4m", {"--sharpen", "0 to 16"}},
      {"pre --taps 12 -o x.y4m", {"--taps", "8, 16"}},
      {"pre --softening 256 -o x.y4m", {"--softening", "0 to 255"}},
      {"pre --lobes 0 -o x.y4m", {"--lobes", "1 to 16"}},
      {"pre --filter nearest -o x.y4m", {"--filter", "lanczos"}},
      {"pre --seed 4294967296 -o x.y4m", {"--seed", "4294967295"}},
      {"pre --denoise 9 -o x.y4m", {"--denoise", "1 to 8"}},
      {"pre --denoise 1:256 -o x.y4m", {"--denoise", "255"}},
      {"pre --denoise 1:10:12 -o x.y4m", {"--denoise", "8 or 16"}},
      {"pre --denoise auto:401 -o x.y4m", {"--denoise", "1 to 400"}},
      {"pre --denoise 1:10:8:4 -o x.y4m", {"--denoise", "1 to 3"}},
      {"pre --temporal 128 -o x.y4m", {"--temporal", "0 to 127"}},
      {"pre --temporal 80:9 -o x.y4m", {"--temporal", "0 to 8"}},
      {"pre --temporal 80:3:1 -o x.y4m", {"--temporal"}},
      {"pre --luma 128:0 -o x.y4m", {"--luma", "127"}},
      {"pre --luma 0:9 -o x.y4m", {"--luma", "1 to 127"}},
      {"pre --luma 64:256 -o x.y4m", {"--luma", "255"}},
      {"pre --luma 127:-255 -o x.y4m", {"refused", "luma_gain"}},
      {"pre --frames 0 -o x.y4m", {"--frames", "from 1"}},
      {"pre --skip -1 -o x.y4m", {"--skip", "from 0"}},
      {"pre --crf 64 -o x.mp4", {"--crf", "63"}},
      {"pre --crf 20 -o x.y4m", {"--crf", "wrapped_avframe"}},
      {"pre --preset slow -o x.mp4", {"--preset", "webcam"}},
      {"post --preset webcam -o x.mp4", {"--preset", "screen-share"}},
      {"pre --encoder-preset slowest -o x.mp4", {"--encoder-preset", "veryslow"}},
      {"pre --encoder-preset slow -o x.y4m", {"--encoder-preset", "wrapped_avframe"}},
      {"pre --synthetic-noise 1001 -o x.y4m", {"--synthetic-noise", "0 to 1000"}},
      {"pre --codec nothing -o x.mp4", {"--codec", "nothing"}},
      {"pre --codec ffv1 -o x.mp4", {"--codec", "ffv1", "mp4"}},
      {"pre --format nothing -o x.mp4", {"--format", "nothing"}},
      {"pre --output-csp 411 -o x.yuv", {"--output-csp", "nv12"}},
      {"pre --output-csp nv12 --codec ffv1 -o x.mkv", {"--output-csp", "ffv1", "nv12"}},
      {"pre --cpu 486 -o x.y4m", {"--cpu", "scalar"}},
      {"pre in.bin --input-csp uyvy -o x.y4m", {"--input-res"}},
      {"pre in.bin --input-res 64x48 -o x.y4m", {"--input-csp"}},
      {"pre in.uyvy -o x.y4m", {"--input-res"}},
      {"pre in.uyvy --input-res 64x48 --fps 0/1 -o x.y4m", {"--fps"}},
      {"post --deblock 20 -o x.y4m", {"--deblock", "21 to 255"}},
      {"object post --deblock 52 -o x.y4m", {"--deblock", "21 to 51"}},
      {"object pre --size 51x40 -o x.y4m", {"even widths"}},
  };
  for (const auto& one : cases) {
    SCOPED_TRACE(one.arguments);
    ExpectComplaint(Tool(one.arguments), 2, one.words);
  }
  EXPECT_TRUE(Listing().empty());
}

TEST_F(ToolTest, NamesTheFileThatItCannotReadOrWrite) {
  Put("text.mkv", "This is not a video.\n");
  Put("huge.y4m", "YUV4MPEG2 W2000000000 H2000000000 F30:1\nFRAME\n");
  Put("narrow.y4m", "YUV4MPEG2 W1 H4 F30:1 C420\nFRAME\n" + std::string(8, '\x80'));
  Put("unmarked.y4m", "YUV4MPEG2 W4 H4 F30:1 C422\nFRANK\n" + std::string(32, '\x80'));
  Put("empty.y4m", "YUV4MPEG2 W4 H4 F30:1 C422\n");
  Put("evil.y4m", "YUV4MPEG2 W4 H4 F30:1 C\33]0;title\7\x9b\nFRAME\n" + std::string(32, '\x80'));
  Put("guarded.y4m", "old");
  chmod(Path("guarded.y4m").c_str(), 0444);
  fs::create_symlink("/dev/full", directory / "full.y4m");
  fs::create_symlink("/dev/full", directory / "full.mkv");
  const std::size_t files = Listing().size();
  const struct {
    std::string arguments;
    std::vector<std::string> words;
  } cases[] = {
      {"pre none.mkv -o x.y4m", {"none.mkv", "No such file"}},
      {"pre text.mkv -o x.y4m", {"text.mkv", "Invalid data"}},
      {"pre huge.y4m -o x.y4m", {"huge.y4m"}},
      {"pre narrow.y4m -o x.y4m", {"width is 1"}},
      {"pre unmarked.y4m -o x.y4m", {"unmarked.y4m"}},
      {"pre empty.y4m -o x.y4m", {"empty.y4m"}},
      {"pre evil.y4m -o x.y4m", {"evil.y4m"}},
      {"pre - -o x.y4m", {"standard input"}},
      {"pre . -o x.y4m", {"directory"}},
      {"pre " + kScene + " -o none/x.y4m", {"none/x.y4m", "No such file"}},
      {"pre " + kScene + " -o guarded.y4m", {"guarded.y4m", "write-protected"}},
      {"pre " + kScene + " -o full.y4m", {"full.y4m", "No space left"}},
      {"pre " + kScene + " -o full.mkv", {"full.mkv", "No space left"}},
      {"pre " + kScene + " -o none/%d.png", {"none/1.png", "No such file"}},
      {"pre " + kScene + " -o x.y4m --stats /dev/full", {"/dev/full", "No space left"}},
      {"pre " + kScene + " -o x.y4m --framemd5 /dev/full", {"/dev/full", "No space left"}},
      {"pre " + kScene + " -o x.y4m --compare none/c.png", {"none/c.png", "No such file"}},
      {"pre " + kScene + " -o - >/dev/full", {"standard output", "No space left"}},
      {"exposure " + kScene + " --plot p.png >/dev/full", {"standard output", "No space left"}},
      {"filters --from 64x48 --to 48x36 --plot p.png >/dev/full", {"standard output", "No space left"}},
      {"info >/dev/full", {"standard output", "No space left"}},
  };
  for (const auto& one : cases) {
    SCOPED_TRACE(one.arguments);
    const Outcome outcome = Tool(one.arguments);
    ExpectComplaint(outcome, one.words[0] == "width is 1" ? 2 : 1, one.words);
    EXPECT_EQ(outcome.err.find_first_of("\33\7\x9b"), std::string::npos) << "raw bytes of the input";
  }
  EXPECT_EQ(Listing().size(), files) << "a failed run left something behind";
  EXPECT_EQ(File("guarded.y4m"), "old");
}

TEST_F(ToolTest, NeverWritesOnTopOfItsInput) {
  Made("pre " + kScene, "in.y4m");
  Made("post in.y4m", "in.png");
  fs::create_symlink("in.y4m", directory / "symbolic.y4m");
  fs::create_symlink("in.png", directory / "symbolic.png");
  fs::create_hard_link(directory / "in.y4m", directory / "hard.y4m");
  Put("list.m3u8", "#EXTM3U\n#EXT-X-TARGETDURATION:1\n#EXTINF:1,\nin.ts\n#EXT-X-ENDLIST\n");
  Made("pre " + kScene, "in.ts");
  const std::string clip = File("in.y4m"), picture = File("in.png"), segment = File("in.ts");
  const struct {
    const char* arguments;
    std::vector<std::string> words;
  } cases[] = {
      {"pre in.y4m -o in.y4m", {"-o", "in.y4m", "read"}},
      {"pre ./in.y4m -o $PWD/in.y4m", {"-o", "in.y4m"}},
      {"pre in.y4m -o symbolic.y4m", {"-o", "symbolic.y4m"}},
      {"pre symbolic.y4m -o in.y4m", {"-o", "in.y4m"}},
      {"pre in.y4m -o hard.y4m", {"-o", "hard.y4m"}},
      {"pre - -o in.y4m <in.y4m", {"-o", "in.y4m"}},
      {"pre in.y4m -o - 1<>in.y4m", {"-o", "standard output"}},
      {"post in.png -o symbolic.png", {"-o", "symbolic.png"}},
      {"post in.y4m -o x.yuv --stats in.y4m", {"--stats", "in.y4m"}},
      {"post in.y4m -o x.yuv --framemd5 hard.y4m", {"--framemd5", "hard.y4m"}},
      {"post in.png -o x.yuv --compare in.png", {"--compare", "in.png"}},
      {"exposure in.png --plot symbolic.png", {"--plot", "symbolic.png"}},
      {"exposure in.y4m --json >>in.y4m", {"standard output"}},
      {"pre list.m3u8 -o in.ts", {"in.ts", "read"}},
  };
  for (const auto& one : cases) {
    SCOPED_TRACE(one.arguments);
    ExpectComplaint(Tool(one.arguments), 2, one.words);
    ASSERT_EQ(File("in.y4m"), clip);
    ASSERT_EQ(File("in.png"), picture);
    ASSERT_EQ(File("in.ts"), segment);
  }
  EXPECT_FALSE(fs::exists(Path("x.yuv")));
}

TEST_F(ToolTest, KeepsModesAndLinksOfResults) {
  Put("secret.y4m", "old");
  chmod(Path("secret.y4m").c_str(), 0600);
  fs::create_symlink("secret.y4m", directory / "link.y4m");
  fs::create_symlink("later.y4m", directory / "dangling.y4m");
  const auto mode = [&](const std::string& name) {
    struct stat status {};
    stat(Path(name).c_str(), &status);
    return status.st_mode & 0777;
  };
  Made("post " + kScene, "link.y4m");
  EXPECT_TRUE(fs::is_symlink(directory / "link.y4m"));
  EXPECT_GT(File("secret.y4m").size(), 1000U);
  EXPECT_EQ(mode("secret.y4m"), 0600U);
  EXPECT_EQ(Shell("umask 027; vidproc post " + kScene + " -o dangling.y4m").status, 0);
  EXPECT_TRUE(fs::is_symlink(directory / "dangling.y4m"));
  EXPECT_EQ(mode("later.y4m"), 0640U);
  EXPECT_EQ(Listing().size(), 4U);
}

TEST_F(ToolTest, RefusesDamagedInputAndKeepsTheOldOutput) {
  MakeClip(Path("whole.mkv"), {});
  Made("post whole.mkv", "whole.y4m");
  Made("post whole.mkv", "whole.yuv");
  Put("result.y4m", "old");
  const auto refused = [&](const std::string& name, const std::string& bytes, const std::string& options) {
    SCOPED_TRACE(name);
    Put(name, bytes);
    ExpectComplaint(Tool("pre " + name + options + " -o result.y4m"), 1, {name});
    EXPECT_EQ(File("result.y4m"), "old");
  };
  for (const std::string ending : {"y4m", "mkv", "yuv"}) {
    const std::string whole = File("whole." + ending);
    refused("cut." + ending, whole.substr(0, whole.size() * 2 / 3), ending == "yuv" ? " --input-res 64x48" : "");
  }
  std::string damaged = File("whole.mkv");
  damaged[damaged.size() / 2] = static_cast<char>(damaged[damaged.size() / 2] ^ 0x55);
  refused("damaged.mkv", damaged, "");
  const std::string small = "YUV4MPEG2 W16 H16 F30:1 C420\nFRAME\n" + std::string(384, '\x80');
  Put("small.y4m", small);
  Made("post small.y4m -q", "f1.png");
  ASSERT_EQ(Tool("post whole.mkv -q --frames 1 -o f2.png").status, 0);
  ExpectComplaint(Tool("post f%d.png -o result.y4m"), 1, {"f%d.png", "16x16 to 64x48"});
  EXPECT_EQ(File("result.y4m"), "old");
}

TEST_F(ToolTest, LeavesNothingWhenAFileGrowsTooLarge) {
  const Outcome outcome = Shell("ulimit -f 8; vidproc pre --synthetic-size 640x480 --frames 3 --codec ffv1 -o x.mkv");
  ExpectComplaint(outcome, 1, {"x.mkv", "File too large"});
  EXPECT_TRUE(Listing().empty());
}

TEST_F(ToolTest, LeavesNothingWhenASignalEndsIt) {
  const struct {
    std::string name;
    int number;
  } signals[] = {{"INT", 2}, {"TERM", 15}, {"HUP", 1}, {"QUIT", 3}};
  for (const auto& [name, number] : signals) {
    for (const std::string output : {"x.y4m", "f%04d.png"}) {
      SCOPED_TRACE(name + " " + output);
      const Outcome outcome = Shell(
          "ulimit -c 0\nvidproc pre --synthetic-size 96x64 --frames 1000000000 -o " + output +
          " &\nwhile kill -0 $! && [ -z \"$(find . -name '.vidproc-*' -size +0)\" ]; do sleep 0.01; done\nkill -" +
          name + " $!; wait $!");
      EXPECT_EQ(outcome.status, 128 + number);
      EXPECT_TRUE(Listing().empty());
    }
  }
}

TEST_F(ToolTest, EndsWhenNobodyReadsOrWritesAnyMore) {
  for (const std::string arguments : {"pre --synthetic-size 320x240 -o -", "exposure --synthetic-size 64x48 --json"}) {
    SCOPED_TRACE(arguments);
    const Outcome outcome =
        Shell("{ timeout 20 vidproc " + arguments + " --frames 1000000000; echo $? >status; } | head -c 9");
    EXPECT_EQ(File("status"), "1\n");
    ExpectComplaint(outcome, 0, {"standard output", "Broken pipe"});
  }
  // Writing fails while the pipe that is read stays silent.
  Made("post --synthetic-size 320x240 --frames 4", "in.y4m");
  const Outcome outcome = Shell(
      "mkfifo hold; { cat in.y4m; read line <hold; } | "
      "{ timeout 20 vidproc post - -f yuv4mpegpipe -o /dev/full; echo $? >status; exec <&-; echo >hold; }");
  EXPECT_EQ(File("status"), "1\n");
  ExpectComplaint(outcome, 0, {"/dev/full", "No space left"});
}

}  // namespace
