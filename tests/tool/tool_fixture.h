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
#include <vidproc/vidproc.hpp>

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

  /// Runs the tool, which has to succeed, and gives the file that it has written.
  std::string Made(const std::string& arguments, const std::string& name) const {
    const Outcome outcome = Tool(arguments + " -o " + name);
    EXPECT_EQ(outcome.status, 0) << arguments << "\n" << outcome.err;
    return File(name);
  }

  std::string Path(const std::string& name) const { return (directory / name).string(); }
  std::string File(const std::string& name) const { return ReadFile(directory / name); }
  void Put(const std::string& name, const std::string& bytes) const { WriteFile(directory / name, bytes); }

  std::vector<std::string> Listing() const {
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(directory)) names.push_back(entry.path().filename());
    std::erase_if(names, [](const std::string& name) { return name == ".out" || name == ".err"; });
    return names;
  }

  /// One clear line besides notes, this status, and each of the given words in it.
  static void ExpectComplaint(const Outcome& outcome, int status, const std::vector<std::string>& words) {
    EXPECT_EQ(outcome.status, status) << outcome.err;
    std::vector<std::string> lines = Lines(outcome.err);
    std::erase_if(lines, [](const std::string& line) { return line.starts_with("vidproc: note: "); });
    ASSERT_EQ(lines.size(), 1U) << outcome.err;
    for (const std::string& word : words) EXPECT_NE(lines[0].find(word), std::string::npos) << lines[0];
  }

  fs::path directory;
};

/// Input of the smallest useful size.
inline const std::string kScene = "--synthetic-size 96x64 --frames 4";

/// Frames without gaps: a moving gradient with some noise on it.
inline std::string RawFrames(const vidproc::FrameInfo& info, int count) {
  const std::size_t bytes = vidproc::FrameBytes(info);
  std::string frames;
  std::uint32_t state = 1;
  for (std::size_t i = 0; i < bytes * static_cast<std::size_t>(count); ++i) {
    state = state * 1664525U + 1013904223U;
    const std::size_t place = i % bytes, number = i / bytes;
    frames += static_cast<char>(40 + (place * 3 + 7 * number) % 150 + (state >> 29));
  }
  return frames;
}

/// What the library makes of them. Handle is vidproc::Pre or vidproc::Post.
template <typename Handle, typename Settings>
std::string Processed(const Settings& settings, const std::string& frames) {
  Handle handle(settings);
  const std::size_t inBytes = vidproc::FrameBytes(settings.input), outBytes = vidproc::FrameBytes(settings.output);
  std::string made;
  for (std::size_t place = 0; place < frames.size(); place += inBytes) {
    const auto* in = reinterpret_cast<const std::uint8_t*>(frames.data() + place);
    std::vector<std::uint8_t> out(outBytes);
    handle.Process(vidproc::InputOver(settings.input, {in, inBytes}), vidproc::OutputOver(settings.output, out));
    made.append(out.begin(), out.end());
  }
  return made;
}

}  // namespace testing_support
