// The bytes that every processor, compiler and later version has to give, as sums in hashes.txt. scripts/golden
// --update writes the file.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>
#include <vector>

#include "golden/golden_cases.h"
#include "support/kernel_harness.h"

namespace golden {

void PaintFrame(std::vector<std::uint8_t>& bytes, int rowBytes, int n) {
  std::uint32_t noise = static_cast<std::uint32_t>(n) * 977 + 1;
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    const int x = static_cast<int>(i) % rowBytes, y = static_cast<int>(i) / rowBytes;
    noise = noise * 1664525 + 1013904223;
    const int slope = std::abs((3 * x + 5 * y + 4 * n) % 256 - 128), step = (x / 11 + y / 7) % 3 * 35;
    const int sample = slope + step + static_cast<int>(noise >> 29);
    bytes[i] = static_cast<std::uint8_t>(noise % 101 == 0 ? 255 * (y % 2) : sample);
  }
}

namespace {

constexpr char kMayImprove[] = "  (may improve)";

std::vector<Case> AllCases() {
  std::vector<Case> cases;
  AddObjectCases(cases);
  AddInterfaceCases(cases);
  return cases;
}

/// A case as it stands in the file.
std::string LineOf(const Case& item) {
  char digest[17];
  std::snprintf(digest, sizeof(digest), "%016llx", static_cast<unsigned long long>(item.digest()));
  return std::string(digest) + "  " + item.name + (item.mayImprove ? kMayImprove : "");
}

TEST(Golden, EveryLevelGivesTheKeptBytes) {
  const std::vector<Case> cases = AllCases();
  if (const char* path = std::getenv("VIDPROC_WRITE_GOLDEN")) {
    std::ofstream file(path);
    for (const Case& item : cases) file << LineOf(item) << "\n";
    ASSERT_TRUE(file.flush()) << path;
    return;
  }
  std::vector<std::string> lines;
  std::ifstream file(VIDPROC_GOLDEN);
  for (std::string line; std::getline(file, line);) lines.push_back(line);
  ASSERT_EQ(lines.size(), cases.size()) << VIDPROC_GOLDEN;
  for (const testing_support::KernelForms& forms : testing_support::AvailableForms()) {
    const testing_support::FormsInUse inUse(forms);
    for (std::size_t i = 0; i < cases.size(); ++i) EXPECT_EQ(LineOf(cases[i]), lines[i]) << "at " << forms.Name();
  }
}

}  // namespace
}  // namespace golden
