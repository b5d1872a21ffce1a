// The command-line tool as its users meet it: what it says of itself, and how it fails.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <string>
#include <utility>
#include <vector>

#include "tool/tool_fixture.h"

namespace {

using namespace testing_support;

TEST_F(ToolTest, AnswersAboutItself) {
  const struct {
    std::string arguments, words;
  } cases[] = {{"--help", "exposure"},
               {"pre --help", "--denoise HOW"},
               {"post --help", "--deblock N"},
               {"--version", "vidproc 1."},
               {"info", "level in use"},
               {"help man", ".SH \"vidproc pre\""},
               {"help bash", "complete "},
               {"object pre --help", "--adaptive"},
               {"help man", "\\-\\-framemd5"},
               {"help bash", " --output-csp "},
               {"bench --streams 2 --synthetic-size 64x48 --size 32x24 --seconds 0.1", "2 handles a core"},
               {"bench --seconds 0.1 --synthetic-size 640x360 --streams", "\n    1 "}};
  for (const auto& one : cases) {
    const Outcome outcome = Tool(one.arguments);
    EXPECT_EQ(outcome.status, 0) << one.arguments;
    EXPECT_NE(outcome.out.find(one.words), std::string::npos) << one.arguments << outcome.out;
    EXPECT_EQ(outcome.err, "") << one.arguments;
  }
  const std::string completion = "vidproc help bash >completion && source ./completion && ";
  for (const auto& [words, reply] : {std::pair{"pre --si", "--size\n"},
                                     {"ob", "object\n"},
                                     {"object po", "post\n"},
                                     {"object post --debl", "--deblock\n"},
                                     {"object post -o x --enh", "--enhance\n"}}) {
    const std::string ask = std::string("COMP_WORDS=(vidproc ") + words + ") && COMP_CWORD=$((${#COMP_WORDS[@]} - 1))";
    EXPECT_EQ(Shell("bash -c '" + completion + ask + " && _vidproc && echo ${COMPREPLY[@]}'").out, reply) << words;
  }
}

TEST_F(ToolTest, RefusesValuesOutOfRange) {
  const struct {
    std::string command, option;
    std::vector<std::string> values;
    std::string allowed;
  } cases[] = {
      {"pre", "--size", {"1x240", "640x0", "640x360p", "x", "99999999999x2", "4294967936x360"}, "2 to 16384"},
      {"pre", "--synthetic-size", {"640x", "640x360x", "16385x2"}, "1 to 16384"},
      {"pre", "--synthetic-noise", {"-1", "1001"}, "from 0 to 1000"},
      {"pre", "--seed", {"-1", "4294967296"}, "from 0 to 4294967295"},
      {"pre", "--frames", {"0", "1000000001"}, "from 1 to 1000000000"},
      {"pre", "--skip", {"-1", "1000000001"}, "from 0 to 1000000000"},
      {"pre", "--fps", {"0/1", "25/0", "30/1001/1", "1000001"}, "30000/1001"},
      {"pre", "--fit", {"squeeze"}, "shrink, pad, crop, stretch"},
      {"pre", "--taps", {"12"}, "8, 16"},
      {"pre", "--filter", {"nearest"}, "lanczos"},
      {"pre", "--alignment", {"left"}, "centres, corners"},
      {"pre", "--softening", {"-1", "256"}, "from 0 to 255"},
      {"pre", "--lobes", {"0", "17"}, "from 1 to 16"},
      {"pre", "--sharpen", {"-1", "17"}, "from 0 to 16"},
      {"pre", "--dither", {"-1", "13", "3x", "0x3"}, "from 0 to 12"},
      {"pre", "--denoise", {"0", "9", "1:256", "1:10:12", "1:10:8:4", "auto:401", "auto:0"}, "PERCENT 1 to 400"},
      {"pre", "--temporal", {"128", "80:9", "80:3:1"}, "0 to 127"},
      {"pre", "--luma", {"128:0", "0:9", "64:256", "64:-256", "64"}, "gain of 1 to 127"},
      {"pre", "--crf", {"64", "-1", "20x"}, "0 to 63"},
      {"pre", "--preset", {"slow"}, "webcam"},
      {"pre", "--encoder-preset", {"slowest"}, "veryslow"},
      {"pre", "--output-csp", {"411"}, "nv12"},
      {"pre", "--codec", {"nothing", "pcm_s16le"}, "ffmpeg -encoders"},
      {"pre", "--format", {"nothing"}, "ffmpeg -muxers"},
      {"pre", "--cpu", {"486"}, "scalar"},
      {"post", "--preset", {"webcam"}, "screen-share"},
      {"post", "--deblock", {"20", "256"}, "from 21 to 255"},
      {"object post", "--deblock", {"20", "52"}, "from 21 to 51"},
      {"object pre", "--enhance", {"33"}, "from 0 to 32"},
      {"object pre", "--soften", {"65"}, "from 0 to 64"},
      {"object pre", "--adaptive", {"9"}, "from 0 to 8"},
  };
  std::vector<Failure> failures;
  for (const auto& [command, option, values, allowed] : cases) {
    for (const std::string& value : values) {
      failures.push_back(
          {command + " " + option + " " + value + " -o x.y4m", {option + ": \"" + value + "\" is n", allowed}});
    }
  }
  ExpectFailures(2, failures);
}

TEST_F(ToolTest, NamesWhatDoesNotGoTogether) {
  Put("narrow.y4m", "YUV4MPEG2 W1 H4 F30:1 C420\nFRAME\n" + std::string(8, '\x80'));
  ExpectFailures(2, {
                        {"", {"say what to do", "pre", "exposure"}},
                        {"frob", {"\"frob\"", "pre", "exposure"}},
                        {"pre --frobnicate", {"--frobnicate"}},
                        {"pre", {"-o", ".y4m"}},
                        {"pre none.mkv -o x.xyz", {"-o", "x.xyz", ".mkv", "--format"}},
                        {"pre \"\" -o x.y4m", {"--input", "empty"}},
                        {"pre -o \"\" --stats s", {"-o", "empty"}},
                        {"pre -o x.y4m --compare x.nv12", {"--compare", "x.nv12", ".png"}},
                        {"pre -o x.png --compare ./x.png", {"--compare", "./x.png", "-o"}},
                        {"pre -o - --stats -", {"--stats", "standard output", "-o"}},
                        {"pre -o x.y4m --framemd5 ../$(basename $PWD)/x.y4m", {"--framemd5", "-o"}},
                        {"pre --synthetic in.mkv -o x.y4m", {"--synthetic", "in.mkv"}},
                        {"exposure --plot x.svg", {"--plot", "x.svg", ".png"}},
                        {"exposure --plot -", {"--plot", "standard output"}},
                        {"filters --from 64x48 --to 32x24 --plot -", {"--plot", "standard output"}},
                        {"filters --from 64x48", {"--to"}},
                        {"bench", {"--streams"}},
                        {"bench --streams 0", {"--streams", "\"0\"", "from 1 to 1024"}},
                        {"bench --streams 1 --seconds nan", {"--seconds", "\"nan\"", "0.1 to 3600"}},
                        {"bench --streams 1 --luma 127:-255", {"refused", "luma_gain"}},
                        {"pre --synthetic-size 96x63 -o x.mp4", {"--size", "even", "96x63"}},
                        {"pre --luma 127:-255 -o x.y4m", {"refused", "luma_gain"}},
                        {"pre --crf 20 -o x.y4m", {"--crf", "wrapped_avframe"}},
                        {"pre --encoder-preset slow -o x.y4m", {"--encoder-preset", "wrapped_avframe"}},
                        {"pre --codec ffv1 -o x.mp4", {"--codec", "ffv1", "mp4"}},
                        {"pre --output-csp nv12 --codec ffv1 -o x.mkv", {"--output-csp", "ffv1", "nv12"}},
                        {"pre in.bin --input-csp uyvy -o x.y4m", {"--input-res"}},
                        {"pre in.bin --input-res 64x48 -o x.y4m", {"--input-csp"}},
                        {"pre in.uyvy -o x.y4m", {"--input-res"}},
                        {"object pre --size 51x40 -o x.y4m", {"even widths"}},
                        {"pre narrow.y4m -o x.y4m", {"width is 1"}},
                    });
}

TEST_F(ToolTest, NamesTheFileThatItCannotReadOrWrite) {
  Put("text.mkv", "This is not a video.\n");
  Put("huge.y4m", "YUV4MPEG2 W2000000000 H2000000000 F30:1\nFRAME\n");
  Put("unmarked.y4m", "YUV4MPEG2 W4 H4 F30:1 C422\nFRANK\n" + std::string(32, '\x80'));
  Put("empty.y4m", "YUV4MPEG2 W4 H4 F30:1 C422\n");
  Put("evil.y4m", "YUV4MPEG2 W4 H4 F30:1 C\33]0;title\7\x9b\nFRAME\n" + std::string(32, '\x80'));
  Put("guarded.y4m", "old");
  chmod(Path("guarded.y4m").c_str(), 0444);
  fs::create_symlink("/dev/full", directory / "full.y4m");
  fs::create_symlink("/dev/full", directory / "full.mkv");
  ExpectFailures(1,
                 {
                     {"pre none.mkv -o x.y4m", {"none.mkv", "No such file"}},
                     {"pre text.mkv -o x.y4m", {"text.mkv", "Invalid data"}},
                     {"pre huge.y4m -o x.y4m", {"huge.y4m"}},
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
                 });
}

TEST_F(ToolTest, NeverWritesOnTopOfItsInput) {
  Made("pre " + kScene, "in.y4m");
  Made("post in.y4m", "in.png");
  fs::create_symlink("in.y4m", directory / "symbolic.y4m");
  fs::create_symlink("in.png", directory / "symbolic.png");
  fs::create_hard_link(directory / "in.y4m", directory / "hard.y4m");
  Put("list.m3u8", "#EXTM3U\n#EXT-X-TARGETDURATION:1\n#EXTINF:1,\nin.ts\n#EXT-X-ENDLIST\n");
  Made("pre " + kScene, "in.ts");
  ExpectFailures(2, {
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
                    });
}

TEST_F(ToolTest, DoesFilesInBulkUnderParallel) {
  if (Shell("parallel --version | grep GNU").status != 0) GTEST_SKIP() << "no GNU parallel here";
  for (const std::string name : {"a.mkv", "b.mkv"}) Made("pre " + kScene, name);
  Put("damaged.mkv", "This is not a video.\n");
  const Outcome outcome =
      Shell("mkdir done; parallel --joblog jobs.tsv vidproc pre -q {} --size 48x -o done/{/.}.mkv ::: *.mkv");
  ExpectComplaint(outcome, 1, {"damaged.mkv"});  // as many as have failed
  EXPECT_EQ(Lines(File("jobs.tsv")).size(), 4U);
  EXPECT_EQ(Shell("ls done").out, "a.mkv\nb.mkv\n");
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
  EXPECT_EQ(Files().size(), 4U);
}

TEST_F(ToolTest, RefusesDamagedInputAndKeepsTheOldOutput) {
  Put("result.y4m", "old");
  for (const std::string ending : {"y4m", "yuv", "mkv --codec ffv1"}) {
    const std::string whole = Made("post --synthetic-size 64x48 --frames 4 --output-csp yuv420p", "whole." + ending);
    Put("cut." + ending.substr(0, 3), whole.substr(0, whole.size() * 2 / 3));
  }
  std::string damaged = File("whole.mkv");
  damaged[damaged.size() / 2] = static_cast<char>(damaged[damaged.size() / 2] ^ 0x55);
  Put("damaged.mkv", damaged);
  ExpectFailures(1, {{"pre cut.y4m -o result.y4m", {"cut.y4m"}},
                     {"pre cut.yuv --input-res 64x48 -o result.y4m", {"cut.yuv"}},
                     {"pre cut.mkv -o result.y4m", {"cut.mkv"}},
                     {"pre damaged.mkv -o result.y4m", {"damaged.mkv"}}});
}

TEST_F(ToolTest, LeavesNothingWhenAFileGrowsTooLarge) {
  const Outcome outcome = Shell("ulimit -f 8; vidproc pre --synthetic-size 640x480 --frames 3 --codec ffv1 -o x.mkv");
  ExpectComplaint(outcome, 1, {"x.mkv", "File too large"});
  EXPECT_EQ(Files().size(), 0U);
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
      EXPECT_EQ(Files().size(), 0U);
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
