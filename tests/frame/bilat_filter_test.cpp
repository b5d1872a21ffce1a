// The dumps of BilatFilter, and the plane that it must not touch.
#include <gtest/gtest.h>

#include <cstdint>
#include <sstream>
#include <string>
#include <vector>

#include "vidproc/video_processor.h"

namespace {

using Dump = std::vector<std::vector<int>>;

constexpr int kDumpSize = 20;

struct Dumps {
  Dump padded, vertical, after;
};

/// A title, the empty line after it, and 20 lines of 20 numbers, each followed by a comma and a space.
void ReadDump(std::istream& text, const std::string& title, Dump& dump) {
  std::string line;
  std::getline(text, line);
  ASSERT_EQ(line, title);
  std::getline(text, line);
  ASSERT_EQ(line, "");
  for (int r = 0; r < kDumpSize; ++r) {
    ASSERT_TRUE(std::getline(text, line));
    std::istringstream fields(line);
    std::vector<int> values;
    std::string rebuilt;
    for (int value; fields >> value; fields.ignore()) {
      values.push_back(value);
      rebuilt += std::to_string(value) + ", ";
    }
    ASSERT_EQ(line, rebuilt);
    ASSERT_EQ(values.size(), std::size_t{kDumpSize});
    dump.push_back(values);
  }
}

Dumps Smooth(const std::uint8_t* plane, int rowBytes, int rows, int pitch) {
  testing::internal::CaptureStdout();
  const int result = BilatFilter(const_cast<std::uint8_t*>(plane), rowBytes, rows, pitch);
  std::istringstream text(testing::internal::GetCapturedStdout());
  EXPECT_EQ(result, 0);
  Dumps dumps;
  ReadDump(text, "pC", dumps.padded);
  ReadDump(text, "pS", dumps.vertical);
  ReadDump(text, "AFTER", dumps.after);
  EXPECT_EQ(text.peek(), std::char_traits<char>::eof());
  return dumps;
}

TEST(BilatFilter, DumpsAConstantPlane) {
  const std::vector<std::uint8_t> plane(50 * 40, 100);
  const Dumps dumps = Smooth(plane.data(), 50, 40, 50);
  const Dump constant(kDumpSize, std::vector<int>(kDumpSize, 100));
  EXPECT_EQ(dumps.padded, constant);
  EXPECT_EQ(dumps.vertical, constant);
  // Twelve columns in front of the plane are empty and enter through taps two columns apart.
  const std::vector<int> faded = {1, 1, 7, 7, 31, 31, 69, 69, 93, 93, 99, 99, 100, 100, 100, 100, 100, 100, 100, 100};
  EXPECT_EQ(dumps.after, Dump(kDumpSize, faded));
  EXPECT_EQ(plane, std::vector<std::uint8_t>(50 * 40, 100));
}

TEST(BilatFilter, RepeatsEdgeRowsAndSkipsPadding) {
  constexpr int kWidth = 24, kRows = 30, kPitch = 31;
  std::vector<std::uint8_t> plane(kPitch * kRows, 255);
  for (int y = 0; y < kRows; ++y) {
    for (int x = 0; x < kWidth; ++x)
      plane[static_cast<std::size_t>(y * kPitch + x)] = static_cast<std::uint8_t>(4 * y + x);
  }
  const std::vector<std::uint8_t> before = plane;
  const Dumps topDown = Smooth(plane.data(), kWidth, kRows, kPitch);
  const Dumps bottomUp = Smooth(plane.data() + kPitch * (kRows - 1), kWidth, kRows, -kPitch);
  for (int r = 0; r < kDumpSize; ++r) {
    const int row = r < 3 ? 0 : r - 3;
    EXPECT_EQ(topDown.padded[static_cast<std::size_t>(r)][7], 4 * row + 7);
    EXPECT_EQ(bottomUp.padded[static_cast<std::size_t>(r)][7], 4 * (kRows - 1 - row) + 7);
  }
  EXPECT_EQ(plane, before);
}

TEST(BilatFilter, SpreadsARowDownTheColumns) {
  constexpr int kSize = 32, kRow = 10;
  std::vector<std::uint8_t> plane(kSize * kSize, 0);
  for (int x = 0; x < kSize; ++x) plane[kRow * kSize + static_cast<std::size_t>(x)] = 255;
  const Dumps dumps = Smooth(plane.data(), kSize, kSize, kSize);
  const std::vector<int> column = {0, 0, 0, 0, 0, 0, 0, 1, 15, 62, 98, 62, 15, 1, 0, 0, 0, 0, 0, 0};
  EXPECT_EQ(dumps.vertical, Dump(kDumpSize, column));
}

TEST(BilatFilter, StaysInsideWhateverTheShape) {
  constexpr int kShapes[][2] = {{1, 1}, {3, 5}, {19, 19}, {1, 500}, {500, 1}, {2, 1000}, {1000, 2}, {13, 12}};
  for (const auto& [width, height] : kShapes) {
    SCOPED_TRACE(std::to_string(width) + "x" + std::to_string(height));
    const std::vector<std::uint8_t> plane(static_cast<std::size_t>(width * height), 200);
    const Dumps dumps = Smooth(plane.data(), width, height, width);
    EXPECT_EQ(dumps.padded[0][0], 200);
    EXPECT_EQ(dumps.vertical[0][0], 200);
  }
}

TEST(BilatFilter, IgnoresWhatIsNoPlane) {
  std::uint8_t plane[1] = {};
  testing::internal::CaptureStdout();
  EXPECT_EQ(BilatFilter(nullptr, 1, 1, 1), 0);
  EXPECT_EQ(BilatFilter(plane, 0, 1, 1), 0);
  EXPECT_EQ(BilatFilter(plane, 1, -1, 1), 0);
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
}

}  // namespace
