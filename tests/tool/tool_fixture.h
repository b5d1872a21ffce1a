// The command-line tool run as a subprocess: arguments, files, pipes and an exit status.
#pragma once

#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string>
#include <vector>

namespace testing_support {

namespace fs = std::filesystem;

inline std::string ReadFile(const fs::path& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

inline void WriteFile(const fs::path& path, const std::string& bytes) {
  std::ofstream(path, std::ios::binary).write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}

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

/// Input of the smallest useful size.
inline const std::string kScene = "--synthetic-size 96x64 --frames 4";

}  // namespace testing_support
