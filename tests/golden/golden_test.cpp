// The bytes that every processor, compiler and later version has to give, as sums in hashes.txt. scripts/golden
// --update writes the file.
#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>

#include "golden/golden_cases.h"
#include "support/failing_malloc.h"

namespace golden {

std::vector<Case> AllCases() {
  std::vector<Case> cases;
  AddObjectCases(cases);
  AddInterfaceCases(cases);
  return cases;
}

std::string LineOf(const Case& item) {
  return item.start().Sum() + "  " + item.name + (item.mayImprove ? "  (may improve)" : "");
}

std::vector<std::string> KeptLines() {
  std::vector<std::string> lines;
  std::ifstream file(VIDPROC_GOLDEN);
  for (std::string line; std::getline(file, line);) lines.push_back(line);
  return lines;
}

namespace {

using testing_support::Garbage;

TEST(Golden, SumsAreMd5) {
  testing_support::Md5 sum;
  EXPECT_EQ(sum.Sum(), "d41d8cd98f00b204e9800998ecf8427e");
  for (int i = 0; i < 8; ++i) sum.Add(reinterpret_cast<const std::uint8_t*>("1234567890"), 10);
  EXPECT_EQ(sum.Sum(), "57edf4a22be3c955ac49da2e2107b67a");
}

/// At each level, and whatever fresh memory holds.
TEST(Golden, EveryLevelGivesTheKeptBytes) {
  const std::vector<Case> cases = AllCases();
  if (const char* path = std::getenv("VIDPROC_WRITE_GOLDEN")) {
    std::ofstream file(path);
    for (const Case& item : cases) file << LineOf(item) << "\n";
    ASSERT_TRUE(file.flush()) << path;
    return;
  }
  const std::vector<std::string> lines = KeptLines();
  ASSERT_EQ(lines.size(), cases.size()) << VIDPROC_GOLDEN;
  // Valgrind sees a use of unset memory where nothing was written to it.
  const bool leavesUnset = std::getenv("VIDPROC_LEAVES_MEMORY_UNSET") != nullptr;
  constexpr Garbage kKinds[] = {Garbage::kNone, Garbage::kZeros, Garbage::kOnes, Garbage::kRandom};
  std::size_t kind = 0;
  for (const testing_support::KernelForms& forms : testing_support::AvailableForms()) {
    const testing_support::FormsInUse inUse(forms);
    for (std::size_t i = 0; i < cases.size(); ++i) {
      const testing_support::FreshMemory fresh(leavesUnset ? Garbage::kNone : kKinds[(kind + i) % std::size(kKinds)]);
      EXPECT_EQ(LineOf(cases[i]), lines[i]) << "at " << forms.Name();
    }
    ++kind;
  }
}

}  // namespace
}  // namespace golden
