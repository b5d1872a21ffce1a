// The command-line tool as its users meet it: what it says of itself, and how it fails.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tool/tool_fixture.h"

namespace {

using namespace testing_support;

TEST_F(ToolTest, AnswersAboutItself) {
  for (const char* arguments : {"--help", "pre --help", "post --help", "--version", "info"}) {
    const Outcome outcome = Tool(arguments);
    EXPECT_EQ(outcome.status, 0) << arguments;
    EXPECT_NE(outcome.out.find("vidproc"), std::string::npos) << arguments;
    EXPECT_EQ(outcome.err, "") << arguments;
  }
}

TEST_F(ToolTest, NamesTheOptionAndItsRangeOnBadUsage) {
  const struct {
    const char* arguments;
    std::vector<std::string> words;
  } cases[] = {
      {"", {"subcommand"}},
      {"pre --frobnicate", {"--frobnicate"}},
      {"pre", {"-o", ".y4m"}},
      {"pre -o x.avi", {"-o", "x.avi", ".mkv"}},
      {"pre none.mkv -o x.avi", {"-o", "x.avi"}},
      {"pre \"\" -o x.y4m", {"IN", "empty"}},
      {"pre -o \"\" --md5", {"-o", "empty"}},
      {"pre -o x.nv12", {"-o", ".uyvy"}},
      {"pre -o x.y4m --compare x.jpg", {"--compare", "x.jpg", ".png"}},
      {"pre -o x.png --compare ./x.png", {"--compare", "./x.png", "-o"}},
      {"pre -o - --stats -", {"--stats", "standard output", "-o"}},
      {"exposure --plot x.svg", {"--plot", "x.svg", ".png"}},
      {"exposure --plot -", {"--plot", "standard output"}},
      {"filters --from 64x48 --to 32x24 --role pre --plot -", {"--plot", "standard output"}},
      {"nv12 -o x.uyvy", {"-o", ".nv12"}},
      {"pre --size 321x240 -o x.y4m", {"--size", "even", "8192"}},
      {"pre --size 0x240 -o x.y4m", {"--size", "2 to 8192"}},
      {"pre --size 99999999999x2 -o x.y4m", {"--size"}},
      {"nv12 --size 96x63 --synthetic-size 96x64 -o x.mp4", {"--size", "even"}},
      {"pre --dither 13 -o x.y4m", {"--dither", "0 to 12"}},
      {"pre --dither -1 -o x.y4m", {"--dither", "0 to 12"}},
      {"pre --adaptive 9 -o x.y4m", {"--adaptive", "1 to 8"}},
      {"pre --taps16 -o x.y4m", {"--taps16", "--adaptive"}},
      {"pre --temporal 128 -o x.y4m", {"--temporal", "0 to 127"}},
      {"pre --temporal 80:9 -o x.y4m", {"--temporal", "0 to 8"}},
      {"pre --luma 64:0 --adaptive 2 -o x.y4m", {"--luma", "--adaptive"}},
      {"pre --luma 128:0 -o x.y4m", {"--luma", "127"}},
      {"pre --frames 0 -o x.y4m", {"--frames", "from 1"}},
      {"pre --cpu 486 -o x.y4m", {"--cpu", "scalar"}},
      {"pre in.bin --raw uyvy422 -o x.y4m", {"--raw-size"}},
      {"pre in.uyvy -o x.y4m", {"in.uyvy", "--raw-size"}},
      {"post --deblock 20 -o x.y4m", {"--deblock", "21 to 51"}},
      {"filters --from 64x48 --to 32x24 --role post --taps16", {"--taps16", "--role"}},
  };
  for (const auto& one : cases) {
    SCOPED_TRACE(one.arguments);
    ExpectComplaint(Tool(one.arguments), 2, one.words);
  }
  EXPECT_TRUE(Listing().empty());
}

TEST_F(ToolTest, NamesTheFileThatItCannotReadOrWrite) {
  WriteFile(directory / "text.mkv", "This is not a video.\n");
  WriteFile(directory / "odd.y4m", "YUV4MPEG2 W5 H4 F30:1 C444\nFRAME\n" + std::string(60, '\x80'));
  WriteFile(directory / "huge.y4m", "YUV4MPEG2 W2000000000 H2000000000 F30:1\nFRAME\n");
  WriteFile(directory / "unmarked.y4m", "YUV4MPEG2 W4 H4 F30:1 C422\nFRANK\n" + std::string(32, '\x80'));
  WriteFile(directory / "empty.y4m", "YUV4MPEG2 W4 H4 F30:1 C422\n");
  fs::create_symlink("/dev/full", directory / "full.y4m");
  fs::create_symlink("/dev/full", directory / "full.mkv");
  const std::size_t files = Listing().size();
  const struct {
    std::string arguments;
    std::vector<std::string> words;
  } cases[] = {
      {"pre none.mkv -o x.y4m", {"none.mkv", "No such file"}},
      {"pre text.mkv -o x.y4m", {"text.mkv", "Invalid data"}},
      {"pre odd.y4m -o x.y4m", {"odd.y4m", "5x4", "even"}},
      {"pre huge.y4m -o x.y4m", {"huge.y4m", "impossible"}},
      {"pre unmarked.y4m -o x.y4m", {"unmarked.y4m", "FRAME"}},
      {"pre empty.y4m -o x.y4m", {"empty.y4m", "no frame"}},
      {"pre - -o x.y4m", {"standard input", "Y4M"}},
      {"pre " + kScene + " -o none/x.y4m", {"none/x.y4m", "No such file"}},
      {"pre " + kScene + " -o full.y4m", {"full.y4m", "No space left"}},
      {"pre " + kScene + " -o full.mkv", {"full.mkv", "No space left"}},
      {"pre " + kScene + " -o x.y4m --stats /dev/full", {"/dev/full", "No space left"}},
      {"pre " + kScene + " -o x.y4m --compare none/c.png", {"none/c.png", "No such file"}},
      {"pre " + kScene + " -o - >/dev/full", {"standard output", "No space left"}},
      {"pre " + kScene + " -o x.y4m --stats s --md5 >/dev/full", {"standard output", "No space left"}},
      {"exposure " + kScene + " --plot p.png >/dev/full", {"standard output", "No space left"}},
      {"filters --from 64x48 --to 48x36 --role pre --plot p.png >/dev/full", {"standard output", "No space left"}},
      {"info >/dev/full", {"standard output", "No space left"}},
  };
  for (const auto& one : cases) {
    SCOPED_TRACE(one.arguments);
    ExpectComplaint(Tool(one.arguments), 1, one.words);
  }
  EXPECT_EQ(Listing().size(), files) << "a failed run left something behind";
}

TEST_F(ToolTest, NeverWritesOnTopOfItsInput) {
  ASSERT_EQ(Tool("pre " + kScene + " -o in.y4m").status, 0);
  ASSERT_EQ(Tool("post in.y4m -o in.png").status, 0);
  fs::create_symlink("in.y4m", directory / "symbolic.y4m");
  fs::create_symlink("in.png", directory / "symbolic.png");
  fs::create_hard_link(directory / "in.y4m", directory / "hard.y4m");
  const std::string clip = File("in.y4m");
  const std::string picture = File("in.png");
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
      {"nv12 in.y4m --md5 --stats in.y4m", {"--stats", "in.y4m"}},
      {"post in.y4m --md5 >>hard.y4m", {"--md5", "standard output"}},
      {"post in.png --md5 --compare in.png", {"--compare", "in.png"}},
      {"exposure in.png --plot symbolic.png", {"--plot", "symbolic.png"}},
      {"exposure in.y4m --json >>in.y4m", {"exposure", "standard output"}},
  };
  for (const auto& one : cases) {
    SCOPED_TRACE(one.arguments);
    ExpectComplaint(Tool(one.arguments), 2, one.words);
    ASSERT_EQ(File("in.y4m"), clip);
    ASSERT_EQ(File("in.png"), picture);
  }
}

TEST_F(ToolTest, RefusesTruncatedInputAndKeepsTheOldOutput) {
  ASSERT_EQ(Tool("pre " + kScene + " -o whole.y4m").status, 0);
  ASSERT_EQ(Tool("pre " + kScene + " -o whole.mkv").status, 0);
  ASSERT_EQ(Tool("pre " + kScene + " -o whole.uyvy").status, 0);
  WriteFile(directory / "result.y4m", "old");
  for (const std::string ending : {"y4m", "mkv", "uyvy"}) {
    SCOPED_TRACE(ending);
    const std::string cut = "cut." + ending;
    const std::string whole = File("whole." + ending);
    WriteFile(directory / cut, whole.substr(0, whole.size() * 2 / 3));
    const std::string raw = ending == "uyvy" ? " --raw uyvy422 --raw-size 96x64" : "";
    ExpectComplaint(Tool("pre " + cut + raw + " -o result.y4m"), 1, {cut});
    EXPECT_EQ(File("result.y4m"), "old");
  }
}

TEST_F(ToolTest, LeavesNothingWhenAFileGrowsTooLarge) {
  const Outcome outcome = Shell("ulimit -f 8; vidproc pre --synthetic-size 640x480 --frames 3 -o x.mkv");
  ExpectComplaint(outcome, 1, {"x.mkv", "File too large"});
  EXPECT_TRUE(Listing().empty());
}

TEST_F(ToolTest, LeavesNothingWhenInterrupted) {
  for (const std::string signal : {"INT", "TERM"}) {
    SCOPED_TRACE(signal);
    const Outcome outcome = Shell(
        "vidproc pre --synthetic-size 96x64 --frames 1000000000 -o x.y4m &\n"
        "while kill -0 $! && ! [ -s x.y4m.* ]; do sleep 0.02; done\n"
        "kill -" +
        signal + " $!; wait $!");
    ExpectComplaint(outcome, 1, {"interrupted"});
    EXPECT_TRUE(Listing().empty());
  }
}

TEST_F(ToolTest, EndsWhenNobodyReadsItsOutput) {
  for (const std::string arguments : {"pre --synthetic-size 320x240 -o -", "exposure --synthetic-size 64x48 --json"}) {
    SCOPED_TRACE(arguments);
    const Outcome outcome =
        Shell("{ timeout 20 vidproc " + arguments + " --frames 1000000000; echo $? >status; } | head -c 9");
    EXPECT_EQ(File("status"), "1\n");
    ExpectComplaint(outcome, 0, {"standard output", "Broken pipe"});
  }
}

}  // namespace
