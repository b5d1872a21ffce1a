// What the synthetic scene and the tool's pictures show.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

#include "scene/drawing.h"
#include "scene/scene.h"
#include "tool/tool_fixture.h"

namespace {

using namespace testing_support;
using vidproc::scene::Format;
using vidproc::scene::Scene;
using vidproc::scene::Settings;
using Bytes = std::vector<std::uint8_t>;

constexpr int kWidth = 640, kHeight = 360;
constexpr std::size_t kLuma = std::size_t{kWidth} * kHeight;

Bytes Render(Scene& scene, const Settings& settings, std::int64_t number, Format format = Format::kI420) {
  Bytes frame(FrameBytes(format, settings.width, settings.height) + 1, 0xa5);
  scene.Render(number, format, frame.data());
  EXPECT_EQ(frame.back(), 0xa5) << "written behind the frame";
  frame.pop_back();
  return frame;
}

Bytes Render(const Settings& settings, std::int64_t number) {
  Scene scene(settings);
  return Render(scene, settings, number);
}

struct Sample {
  int y, cb, cr;
};

/// Of an I420 frame of 640x360, at shares of its width and height.
Sample At(const Bytes& frame, double right, double down) {
  const auto x = static_cast<std::size_t>(right * kWidth), y = static_cast<std::size_t>(down * kHeight);
  const std::size_t chroma = y / 2 * (kWidth / 2) + x / 2;
  return {frame[y * kWidth + x], frame[kLuma + chroma], frame[kLuma + kLuma / 4 + chroma]};
}

TEST(SceneTest, ShowsSkinInTheFaceAndAGreyishWall) {
  for (const int number : {0, 17, 40}) {
    const Bytes frame = Render({kWidth, kHeight, 1, 0}, number);
    const Sample face = At(frame, 0.47, 0.52), wall = At(frame, 0.72, 0.2), jumper = At(frame, 0.46, 0.83);
    EXPECT_TRUE(face.y > 120 && face.y < 220 && face.cb > 77 && face.cb < 125 && face.cr > 135 && face.cr < 173)
        << face.y << " " << face.cb << " " << face.cr;
    EXPECT_TRUE(std::abs(wall.cb - 128) < 10 && std::abs(wall.cr - 128) < 10) << wall.cb << " " << wall.cr;
    EXPECT_GT(jumper.cb, 136);
  }
}

TEST(SceneTest, HasNoiseThatGrowsWithBrightness) {
  const Bytes clean = Render({kWidth, kHeight, 1, 0}, 5), noisy = Render({kWidth, kHeight, 1, 1}, 5),
              strong = Render({kWidth, kHeight, 1, 2}, 5);
  /// In samples whose clean value lies from `low` to below `low + 40`.
  const auto variance = [&](const Bytes& frame, int low, std::size_t first, std::size_t end) {
    double sum = 0;
    int count = 0;
    for (std::size_t i = first; i < end; ++i) {
      if (clean[i] < low || clean[i] >= low + 40) continue;
      sum += (frame[i] - clean[i]) * (frame[i] - clean[i]);
      ++count;
    }
    return sum / count;
  };
  double darker = 1;
  for (const int low : {30, 70, 110, 150}) {  // above, white is clipped
    const double normal = variance(noisy, low, 0, kLuma);
    EXPECT_GT(normal, 1.2 * darker) << low;
    EXPECT_NEAR(variance(strong, low, 0, kLuma) / normal, 4, 0.4) << low;
    darker = normal;
  }
  EXPECT_GT(variance(noisy, 110, kLuma, clean.size()), 1);
  EXPECT_EQ(Render({kWidth, kHeight, 2, 0}, 5), clean);
  EXPECT_NE(Render({kWidth, kHeight, 2, 1}, 5), noisy);
}

TEST(SceneTest, MovesTheHandAndLeavesTheWall) {
  const Bytes before = Render({kWidth, kHeight, 1, 0}, 0), after = Render({kWidth, kHeight, 1, 0}, 8);
  int hand = 0, wall = 0;
  for (double y = 0; y < 1; y += 1.0 / kHeight) {
    for (double x = 0.6; x < 0.76; x += 1.0 / kWidth) {
      const bool hasChanged = std::abs(At(before, x, y).y - At(after, x, y).y) > 20;
      hand += hasChanged && y > 0.5 && y < 0.7 ? 1 : 0;
      wall += hasChanged && y < 0.3 && x > 0.65 ? 1 : 0;
    }
  }
  EXPECT_GT(hand, 500);
  EXPECT_EQ(wall, 0);
}

TEST(SceneTest, GivesEveryFrameByItselfInEveryFormatAndSize) {
  for (const auto& [width, height] : {std::pair{2, 1}, {2, 2}, {3, 5}, {64, 480}, {500, 16}, {97, 63}, {322, 240}}) {
    SCOPED_TRACE(::testing::Message() << width << "x" << height);
    const Settings settings{width, height, 3, 1};
    Scene scene(settings);
    Render(scene, settings, 70, Format::kNv12);
    const Bytes planes = Render(scene, settings, 9), nv12 = Render(scene, settings, 9, Format::kNv12);
    EXPECT_EQ(planes, Render(settings, 9));
    EXPECT_NE(planes, Render(scene, settings, 10));
    const auto luma = static_cast<std::size_t>(width * height), chroma = (planes.size() - luma) / 2;
    Bytes apart(nv12.begin(), nv12.begin() + width * height);
    for (const std::size_t component : {0u, 1u}) {
      for (std::size_t i = 0; i < chroma; ++i) apart.push_back(nv12[luma + 2 * i + component]);
    }
    EXPECT_EQ(apart, planes);
    const Bytes uyvy = Render(scene, settings, 9, Format::kUyvy);
    const auto columns = static_cast<std::size_t>(width), rowBytes = (columns + 1) / 2 * 4;
    for (std::size_t i = 0; i < luma; ++i) ASSERT_EQ(uyvy[i / columns * rowBytes + i % columns * 2 + 1], planes[i]);
  }
}

class PictureTest : public ToolTest {
 protected:
  /// Runs the tool, which has to write a PNG of this name.
  void Draw(const std::string& arguments, const std::string& name) {
    ASSERT_EQ(Tool(arguments + " " + name).status, 0);
    surface.reset(cairo_image_surface_create_from_png(Path(name).c_str()));
    ASSERT_EQ(cairo_surface_status(surface.get()), CAIRO_STATUS_SUCCESS) << name;
    width = cairo_image_surface_get_width(surface.get());
    height = cairo_image_surface_get_height(surface.get());
  }
  const std::uint8_t* Pixel(int x, int y) const {  // blue, green, red
    return cairo_image_surface_get_data(surface.get()) + y * cairo_image_surface_get_stride(surface.get()) + 4 * x;
  }
  /// How many pixels of a rectangle have a green of this range.
  int Count(int left, int top, int right, int bottom, int low, int high) const {
    int count = 0;
    for (int y = top; y < bottom; ++y) {
      for (int x = left; x < right; ++x) count += Pixel(x, y)[1] >= low && Pixel(x, y)[1] <= high ? 1 : 0;
    }
    return count;
  }
  /// The first blue row of a column; the height where there is none.
  int Blue(int x) const {
    int y = 0;
    while (y < height && Pixel(x, y)[0] <= Pixel(x, y)[2] + 80) ++y;
    return y;
  }

  vidproc::drawing::SurfacePtr surface;
  int width = 0, height = 0;
};

TEST_F(PictureTest, ComparesBothFramesUnderLabels) {
  const std::string settings = "--synthetic-size 640x360 --size 320x180 --denoise 1 --frames 3";
  ASSERT_NO_FATAL_FAILURE(Draw("pre " + settings + " --compare", "c.png"));
  const int column = width / 2, row = height / 2;
  for (const int left : {0, column + 4}) {
    for (const int top : {0, row}) {
      const int letters = Count(left, top, left + 200, top + 26, 201, 255);
      EXPECT_TRUE(letters > 200 && letters < 2000) << letters;
    }
  }
  // Between the head and the shelf the wall's noise is softened.
  const auto roughness = [&](int left) {
    double sum = 0;
    for (int y = row / 8; y < row / 3; ++y) {
      for (int x = left + column * 64 / 100; x < left + column * 74 / 100; ++x) {
        sum += std::abs(Pixel(x, y)[1] - Pixel(x + 1, y)[1]);
      }
    }
    return sum;
  };
  EXPECT_LT(1.5 * roughness(column + 4), roughness(0));
}

TEST_F(PictureTest, ComparesInTheShapeOfTheScreen) {
  const std::string frame = "FRAME\n" + std::string(std::size_t{160} * 120 * 2, '\x60');
  Put("wide.y4m", "YUV4MPEG2 W160 H120 F30:1 Ip A2:1 C422 XCOLORRANGE=LIMITED\n" + frame);
  ASSERT_NO_FATAL_FAILURE(Draw("post wide.y4m --compare", "c.png"));
  const int rows = Count(20, 0, 21, height / 2, 81, 255);  // but for a letter
  EXPECT_NEAR(width / 2.0 / rows, 160 * 2 / 120.0, 0.3);
}

TEST_F(PictureTest, DrawsBrightnessToScale) {
  ASSERT_NO_FATAL_FAILURE(Draw("exposure --synthetic-size 64x48 --plot", "p.png"));
  // The lamp is on at 1.5 s and out at 3.5 s of 5; out, the light is 0.55 of what it was, and black is at 16.
  constexpr int kLeft = 64, kTop = 40;
  const int axis = height - 56;
  const auto curve = [&](double seconds) {
    return axis - Blue(kLeft + static_cast<int>((width - 24 - kLeft) * seconds / 5) + 3);
  };
  EXPECT_GT(Count(kLeft, axis, width - 24, axis + 1, 0, 79), width - 24 - kLeft - 40);
  const double black = 16.0 / 255 * (axis - kTop);
  EXPECT_NEAR((curve(3.5) - black) / (curve(1.5) - black), 0.55, 0.02);
  EXPECT_GT(curve(1.5), (axis - kTop) / 3);

  ASSERT_NO_FATAL_FAILURE(Draw("exposure --synthetic-size 64x48 --frames 9 --plot", "without_events.png"));
  EXPECT_GT(Blue(180), 160) << "a line from the title";
}

TEST_F(PictureTest, DrawsTapsWhereTheyStand) {
  const std::string settings = "--from 128x96 --to 64x96 --filter gaussian --alignment corners";
  ASSERT_NO_FATAL_FAILURE(Draw("filters " + settings + " --plot", "f.png"));
  // One tap of weight 1 at distance 0; all others lie on the line of weight 0.
  const int middle = (64 + 640 - 24) / 2;
  for (int x = 70; x < 620; ++x) EXPECT_TRUE(std::abs(x - middle) <= 6 || Blue(x) > Blue(middle) + 200) << x;
}

TEST_F(PictureTest, ConvertsRgbByTheRightMatrixAndRange) {
  const struct {
    int rows;
    std::string matrix;
    int y, cb, cr;  ///< of the green below
  } cases[] = {{720, "BT.709", 133, 63, 52}, {16, "BT.601", 112, 72, 58}};
  for (const auto& [rows, matrix, y, cb, cr] : cases) {
    const std::size_t luma = std::size_t{16} * static_cast<std::size_t>(rows);
    std::string picture = "P6 16 " + std::to_string(rows) + " 255\n";
    for (std::size_t i = 0; i < luma; ++i) picture += i < luma / 2 ? std::string{0, '\xbf', 0} : std::string(3, '\xff');
    Put("in.ppm", picture);
    const std::string frame = Made("post in.ppm", "a.i422"), note = Tool("post in.ppm -o x.y4m").err;
    const auto at = [&](std::size_t place) { return static_cast<unsigned char>(frame.at(place)); };
    EXPECT_NEAR(at(0), y, 1) << matrix;
    EXPECT_NEAR(at(luma), cb, 1) << matrix;
    EXPECT_NEAR(at(luma * 3 / 2), cr, 1) << matrix;
    EXPECT_EQ(at(luma - 1), 235);
    EXPECT_NE(note.find("in.ppm is RGB; converted to " + matrix + ", limited range"), std::string::npos) << note;
  }
  ASSERT_NO_FATAL_FAILURE(Draw("post in.ppm -o", "b.png"));
  for (const int colour : {0, 1, 2}) EXPECT_NEAR(Pixel(3, 3)[colour], colour == 1 ? 0xbf : 0, 2);
  EXPECT_EQ(Count(0, 9, 16, 16, 255, 255), 16 * 7);
  // Full range stays full.
  const std::string full = std::string(256, '\x40') + std::string(128, '\x80');
  Put("full.y4m", "YUV4MPEG2 W16 H16 F30:1 C420jpeg XCOLORRANGE=FULL\nFRAME\n" + full);
  ASSERT_NO_FATAL_FAILURE(Draw("post full.y4m -o", "grey.png"));
  EXPECT_EQ(Count(0, 0, 16, 16, 0x40, 0x40), 16 * 16);
  EXPECT_EQ(Made("post full.y4m", "full.yuv"), full);
}

}  // namespace
