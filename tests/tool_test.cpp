// The command-line tool as its users meet it: a subprocess with arguments, files, pipes and an exit status.
#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;

std::string ReadFile(const fs::path& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

void WriteFile(const fs::path& path, const std::string& bytes) {
  std::ofstream(path, std::ios::binary).write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}

std::vector<std::string> Lines(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) lines.push_back(line);
  return lines;
}

struct Outcome {
  int status = -1;
  std::string out;
  std::string err;
};

/// A directory of its own for each test, and the tool run inside it.
class ToolTest : public ::testing::Test {
 protected:
  void SetUp() override {
    std::string pattern = (fs::temp_directory_path() / "vidproc-tool-XXXXXX").string();
    ASSERT_NE(mkdtemp(pattern.data()), nullptr);
    directory = pattern;
  }
  void TearDown() override { fs::remove_all(directory); }

  /// Runs a shell line in the directory; `vidproc` is the tool under test.
  Outcome Shell(const std::string& line) const {
    const std::string command = "cd '" + directory.string() + "' && vidproc() { '" VIDPROC_TOOL "' \"$@\"; } && { " +
                                line + "\n} >.out 2>.err </dev/null";
    const int result = std::system(command.c_str());
    return {WIFEXITED(result) ? WEXITSTATUS(result) : -1, ReadFile(directory / ".out"), ReadFile(directory / ".err")};
  }

  Outcome Tool(const std::string& arguments) const { return Shell("vidproc " + arguments); }

  /// The MD5 that the tool prints for its frames.
  std::string Md5(const std::string& arguments) const {
    const Outcome outcome = Tool(arguments + " --md5");
    EXPECT_EQ(outcome.status, 0) << arguments << "\n" << outcome.err;
    return outcome.out.substr(0, 32);
  }

  std::string File(const std::string& name) const { return ReadFile(directory / name); }

  std::vector<std::string> Listing() const {
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(directory)) names.push_back(entry.path().filename());
    std::erase_if(names, [](const std::string& name) { return name == ".out" || name == ".err"; });
    return names;
  }

  /// One clear line, this status, and each of the given words in it.
  static void ExpectComplaint(const Outcome& outcome, int status, const std::vector<std::string>& words) {
    EXPECT_EQ(outcome.status, status) << outcome.err;
    EXPECT_EQ(Lines(outcome.err).size(), 1U) << outcome.err;
    for (const std::string& word : words) EXPECT_NE(outcome.err.find(word), std::string::npos) << outcome.err;
  }

  fs::path directory;
};

const std::string kScene = "--synthetic-size 96x64 --frames 4";

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
      {"pre -o x.nv12", {"-o", ".uyvy"}},
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
      {"info >/dev/full", {"standard output", "No space left"}},
  };
  for (const auto& one : cases) {
    SCOPED_TRACE(one.arguments);
    ExpectComplaint(Tool(one.arguments), 1, one.words);
  }
  EXPECT_EQ(Listing().size(), files) << "a failed run left something behind";
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

TEST_F(ToolTest, ReportsAClosedPipe) {
  const Outcome outcome =
      Shell("{ vidproc pre --synthetic-size 320x240 --frames 20 -o -; echo $? >status; } | head -c 9");
  EXPECT_EQ(File("status"), "1\n");
  ExpectComplaint(outcome, 0, {"standard output", "Broken pipe"});
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

TEST_F(ToolTest, ConvertsFullRangeAndSaysSo) {
  std::string white = "YUV4MPEG2 W16 H16 F30:1 C420jpeg XCOLORRANGE=FULL\nFRAME\n" + std::string(256, '\xff');
  WriteFile(directory / "full.y4m", white + std::string(128, '\x80'));
  for (const std::string command : {"post full.y4m -o x.uyvy", "nv12 full.y4m -o x.nv12"}) {
    const Outcome outcome = Tool(command);
    EXPECT_EQ(outcome.status, 0) << command;
    EXPECT_NE(outcome.err.find("full.y4m is full range"), std::string::npos) << outcome.err;
  }
  EXPECT_EQ(File("x.uyvy").substr(0, 4), "\x80\xeb\x80\xeb");
  EXPECT_EQ(File("x.nv12"), std::string(256, '\xeb') + std::string(128, '\x80'));
}

TEST_F(ToolTest, GivesTheSameFramesAtEveryLevel) {
  const Outcome info = Tool("info");
  std::istringstream fields(Lines(info.out).at(2));
  std::vector<std::string> levels{std::istream_iterator<std::string>(fields), {}};
  ASSERT_EQ(levels.at(0), "levels");
  ASSERT_EQ(levels.at(1), "scalar");
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
               {"--dither 4 --seed 2 --temporal 0", Md5("pre --size 72x40 --soften 4 --dither 4 " + kScene)},
               {"--adaptive 3", plain},
               {"--adaptive 3 --temporal 0", adaptive},
               {"--adaptive 3 --motion-smoothing", adaptive},
               {"--adaptive 3 --taps16", adaptive},
               {"--adaptive 3 --taps16 --enhance 2", longTaps}};
  for (const auto& one : cases) {
    EXPECT_NE(Md5("pre --size 72x40 --soften 4 " + one.options + " " + kScene), one.without) << one.options;
  }
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

TEST_F(ToolTest, CutsAtTheNumberOfFramesAndDrawsPictures) {
  ASSERT_EQ(Tool("pre --synthetic-size 96x64 --frames 3 --size 48x32 -o x.uyvy --compare c.png").status, 0);
  EXPECT_EQ(File("x.uyvy").size(), 3U * 48 * 32 * 2);
  ASSERT_EQ(Tool("pre x.uyvy --raw uyvy422 --raw-size 48x32 -o x.png").status, 0);
  ASSERT_EQ(Tool("filters --from 64x48 --to 48x36 --role pre --plot f.png").status, 0);
  for (const char* name : {"c.png", "x.png", "f.png"}) {
    EXPECT_EQ(File(name).substr(0, 8), "\x89PNG\r\n\x1a\n") << name;
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

}  // namespace
