// The dumps of BilatFilter, and the plane that it must not touch.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

#include "fuzz/digest.h"
#include "vidproc/video_processor.h"

namespace {

using Plane = std::vector<std::uint8_t>;
constexpr int kDumpSize = 20;

std::string Dumps(const Plane& plane, int rowBytes, int rows, int pitch) {
  const std::uint8_t* const first = pitch < 0 ? plane.data() - pitch * (rows - 1) : plane.data();
  testing::internal::CaptureStdout();
  EXPECT_EQ(BilatFilter(const_cast<std::uint8_t*>(first), rowBytes, rows, pitch), 0);
  return testing::internal::GetCapturedStdout();
}

/// A title, an empty line, and 20 lines of 20 numbers.
std::string DumpOf(const std::string& title, const std::vector<int>& row) {
  std::string line, text = title + "\n\n";
  for (const int value : row) line += std::to_string(value) + ", ";
  for (int r = 0; r < kDumpSize; ++r) text += line + "\n";
  return text;
}

TEST(BilatFilter, DumpsAConstantPlane) {
  const std::vector<int> constant(kDumpSize, 100);
  // Twelve columns in front of the plane are empty and enter through taps two columns apart.
  const std::vector<int> faded = {1, 1, 7, 7, 31, 31, 69, 69, 93, 93, 99, 99, 100, 100, 100, 100, 100, 100, 100, 100};
  EXPECT_EQ(Dumps(Plane(50 * 40, 100), 50, 40, 50),
            DumpOf("pC", constant) + DumpOf("pS", constant) + DumpOf("AFTER", faded));
}

TEST(BilatFilter, DumpsWhatItAlwaysHas) {
  const struct {
    int rowBytes, rows, pitch;
    std::uint64_t digest;
  } kCases[] = {
      {24, 30, 31, 0xEA162EC0C79796C8},    {24, 30, -31, 0xFF59AD1D0C228008}, {80, 60, 80, 0x69240CA7361C2AB0},
      {1, 1, 1, 0x3C36E5CCAA793331},       {3, 5, 3, 0x96FE0A24911D38C5},     {19, 19, 19, 0x4DBA086239E13483},
      {1, 500, 1, 0x9BD75FF15B9A7C71},     {500, 1, 500, 0x4052CE7D85FBC3F1}, {2, 1000, 2, 0x14C4050A8485A796},
      {1000, 2, 1000, 0xB8EC592FF2F6DF0E}, {13, 12, 13, 0xC2B321B16CD18C26}};
  for (const auto& c : kCases) {
    Plane plane(static_cast<std::size_t>(c.rows * std::abs(c.pitch)));
    for (std::size_t i = 0; i < plane.size(); ++i) plane[i] = static_cast<std::uint8_t>(i * i / 7 + 3 * i);
    const Plane before = plane;
    const std::string dumps = Dumps(plane, c.rowBytes, c.rows, c.pitch);
    fuzzing::Digest digest;
    for (const char character : dumps) digest.Add(character);
    EXPECT_EQ(digest.Value(), c.digest) << c.rowBytes << "x" << c.rows << ", pitch " << c.pitch << "\n" << dumps;
    EXPECT_EQ(plane, before);
  }
}

TEST(BilatFilter, IgnoresWhatIsNoPlane) {
  EXPECT_EQ(Dumps({0}, 0, 1, 1), "");
  EXPECT_EQ(Dumps({0}, 1, -1, 1), "");
  EXPECT_EQ(BilatFilter(nullptr, 1, 1, 1), 0);
}

}  // namespace
