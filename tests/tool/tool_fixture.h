// The command-line tool run as a subprocess: arguments, files, pipes and an exit status.
#pragma once

#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <sstream>
#include <string>
#include <vector>
#include <vidproc/vidproc.hpp>

#include "support/fast_noise.h"

namespace testing_support {

namespace fs = std::filesystem;

inline std::vector<std::string> Lines(const std::string& text) {
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
    const std::string path = fs::path(VIDPROC_TOOL).parent_path().string();
    const std::string command =
        "cd '" + directory.string() + "' && PATH='" + path + "':$PATH && { " + line + "\n} >.out 2>.err </dev/null";
    const int result = std::system(command.c_str());
    return {WIFEXITED(result) ? WEXITSTATUS(result) : -1, File(".out"), File(".err")};
  }

  Outcome Tool(const std::string& arguments) const { return Shell("vidproc " + arguments); }

  /// Runs the tool, which has to succeed, and gives the file that it has written.
  std::string Made(const std::string& arguments, const std::string& name) const {
    const Outcome outcome = Tool(arguments + " -o " + name);
    EXPECT_EQ(outcome.status, 0) << arguments << "\n" << outcome.err;
    return File(name);
  }

  std::string Path(const std::string& name) const { return (directory / name).string(); }
  std::string File(const std::string& name) const {
    std::ifstream file(directory / name, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
  }
  void Put(const std::string& name, const std::string& bytes) const {
    std::ofstream(directory / name, std::ios::binary) << bytes;
  }

  /// All files with what they hold.
  std::map<std::string, std::string> Files() const {
    std::map<std::string, std::string> files;
    for (const auto& entry : fs::directory_iterator(directory)) {
      const std::string name = entry.path().filename();
      if (name != ".out" && name != ".err") files[name] = entry.is_regular_file() ? File(name) : "";
    }
    return files;
  }

  /// One clear line besides notes, this status, and each of the given words in it.
  static void ExpectComplaint(const Outcome& outcome, int status, const std::vector<std::string>& words) {
    EXPECT_EQ(outcome.status, status) << outcome.err;
    std::vector<std::string> lines = Lines(outcome.err);
    std::erase_if(lines, [](const std::string& line) { return line.starts_with("vidproc: note: "); });
    ASSERT_EQ(lines.size(), 1U) << outcome.err;
    for (const std::string& word : words) EXPECT_NE(lines[0].find(word), std::string::npos) << lines[0];
  }

  struct Failure {
    std::string arguments;
    std::vector<std::string> words;
  };
  /// Each command ends so, prints no raw bytes, and touches no file.
  void ExpectFailures(int status, const std::vector<Failure>& cases) const {
    const std::map<std::string, std::string> files = Files();
    for (const auto& [arguments, words] : cases) {
      SCOPED_TRACE(arguments);
      const Outcome outcome = Tool(arguments);
      ExpectComplaint(outcome, status, words);
      EXPECT_EQ(outcome.err.find_first_of("\33\7\x9b"), std::string::npos);
      ASSERT_TRUE(Files() == files);
    }
  }

  fs::path directory;
};

/// Input of the smallest useful size.
inline const std::string kScene = "--synthetic-size 96x64 --frames 4";

/// Frames without gaps: a moving gradient with some noise on it.
inline std::string RawFrames(const vidproc::FrameInfo& info, int count) {
  const std::size_t bytes = vidproc::FrameBytes(info);
  std::string frames;
  FastNoise noise(1);
  for (std::size_t i = 0; i < bytes * static_cast<std::size_t>(count); ++i) {
    const std::size_t place = i % bytes, number = i / bytes;
    frames += static_cast<char>(40 + (place * 3 + 7 * number) % 150 + (noise.Bits() >> 29));
  }
  return frames;
}

}  // namespace testing_support
