// Every input that is kept runs once more: those that reach most of the library, and those that have found a fault.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "targets.h"
#include "tests/support/eight_threads.h"
#include "tests/support/frame_content.h"

namespace {

std::vector<std::uint8_t> DrawInput(std::uint32_t seed) {
  testing_support::Random random(seed);
  std::vector<std::uint8_t> bytes(512);
  random.Fill(bytes);
  return bytes;
}

class Corpus : public testing::TestWithParam<fuzzing::Target> {};

TEST_P(Corpus, Passes) {
  std::vector<std::filesystem::path> files;
  for (const auto& entry :
       std::filesystem::directory_iterator(std::filesystem::path(VIDPROC_CORPUS) / GetParam().name)) {
    files.push_back(entry.path());
  }
  std::ranges::sort(files);
  ASSERT_FALSE(files.empty());
  for (const std::filesystem::path& file : files) {
    SCOPED_TRACE(file);
    std::ifstream stream(file, std::ios::binary);
    const std::string bytes{std::istreambuf_iterator<char>(stream), {}};
    GetParam().run({reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()});
  }
}

/// Finds what the kept inputs miss: those were chosen for the lines they reach.
TEST_P(Corpus, DrawnInputsPass) {
  for (std::uint32_t seed = 0; seed < 100; ++seed) {
    SCOPED_TRACE(seed);
    const std::vector<std::uint8_t> bytes = DrawInput(seed);
    GetParam().run({bytes.data(), bytes.size()});
  }
}

/// Calls on handles of a thread's own give what they give alone.
TEST(DrawnCalls, AgreeInEightThreads) {
  const auto run = [](std::size_t number) {
    const std::vector<std::uint8_t> bytes = DrawInput(static_cast<std::uint32_t>(number));
    fuzzing::Input input(bytes.data(), bytes.size());
    return (number % 2 == 0 ? fuzzing::RunObjects : fuzzing::RunInterface)(input, fuzzing::Run::kRepeatable);
  };
  std::vector<std::uint64_t> alone;
  while (alone.size() < 200) alone.push_back(run(alone.size()));
  testing_support::RunInEightThreads(alone.size(), [&](std::size_t i) { EXPECT_EQ(run(i), alone[i]) << i; });
}

INSTANTIATE_TEST_SUITE_P(Fuzz, Corpus, testing::ValuesIn(fuzzing::kTargets),
                         [](const auto& info) { return info.param.name; });

}  // namespace
