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
using vidproc::scene::FrameBytes;
using vidproc::scene::Scene;
using vidproc::scene::Settings;

using Bytes = std::vector<std::uint8_t>;

constexpr int kWidth = 640, kHeight = 360;

Bytes Render(const Settings& settings, std::int64_t number, Format format) {
  Bytes frame(FrameBytes(format, settings.width, settings.height));
  Scene(settings).Render(number, format, frame.data());
  return frame;
}

struct Sample {
  int y, cb, cr;
};

/// Of an I420 frame of 640x360, at shares of its width and height.
Sample At(const Bytes& frame, double right, double down) {
  const auto x = static_cast<std::size_t>(right * kWidth), y = static_cast<std::size_t>(down * kHeight);
  const std::size_t luma = std::size_t{kWidth} * kHeight, chroma = y / 2 * (kWidth / 2) + x / 2;
  return {frame[y * kWidth + x], frame[luma + chroma], frame[luma + luma / 4 + chroma]};
}

TEST(SceneTest, ShowsSkinInTheFaceAndAGreyishWall) {
  for (const int number : {0, 17, 40}) {
    const Bytes frame = Render({kWidth, kHeight, 1, 0}, number, Format::kI420);
    const Sample face = At(frame, 0.47, 0.52), wall = At(frame, 0.72, 0.2), jumper = At(frame, 0.46, 0.83);
    EXPECT_TRUE(face.y > 120 && face.y < 220 && face.cb > 77 && face.cb < 125 && face.cr > 135 && face.cr < 173)
        << face.y << " " << face.cb << " " << face.cr;
    EXPECT_TRUE(std::abs(wall.cb - 128) < 10 && std::abs(wall.cr - 128) < 10) << wall.cb << " " << wall.cr;
    EXPECT_GT(jumper.cb, 136);
  }
}

/// Variance of the noise in samples whose clean luma lies from `low` to below `low + 40`.
double NoiseVariance(const Bytes& clean, const Bytes& noisy, int low, std::size_t first, std::size_t end) {
  double sum = 0;
  int count = 0;
  for (std::size_t i = first; i < end; ++i) {
    if (clean[i] < low || clean[i] >= low + 40) continue;
    sum += (noisy[i] - clean[i]) * (noisy[i] - clean[i]);
    ++count;
  }
  return sum / count;
}

TEST(SceneTest, HasNoiseThatGrowsWithBrightness) {
  const Bytes clean = Render({kWidth, kHeight, 1, 0}, 5, Format::kI420);
  const Bytes noisy = Render({kWidth, kHeight, 1, 1}, 5, Format::kI420);
  const Bytes strong = Render({kWidth, kHeight, 1, 2}, 5, Format::kI420);
  const std::size_t luma = std::size_t{kWidth} * kHeight;
  double darker = 1;
  for (const int low : {30, 70, 110, 150}) {  // above, white is clipped
    const double variance = NoiseVariance(clean, noisy, low, 0, luma);
    EXPECT_GT(variance, 1.2 * darker) << low;
    EXPECT_NEAR(NoiseVariance(clean, strong, low, 0, luma) / variance, 4, 0.4) << low;
    darker = variance;
  }
  EXPECT_GT(NoiseVariance(clean, noisy, 110, luma, clean.size()), 1);
  EXPECT_EQ(Render({kWidth, kHeight, 2, 0}, 5, Format::kI420), clean);
  EXPECT_NE(Render({kWidth, kHeight, 2, 1}, 5, Format::kI420), noisy);
}

TEST(SceneTest, MovesTheHandAndLeavesTheWall) {
  const Settings clean{kWidth, kHeight, 1, 0};
  const Bytes before = Render(clean, 0, Format::kI420), after = Render(clean, 8, Format::kI420);
  const auto changed = [&](double left, double top, double right, double bottom) {
    int count = 0;
    for (double y = top; y < bottom; y += 1.0 / kHeight) {
      for (double x = left; x < right; x += 1.0 / kWidth) {
        count += std::abs(At(before, x, y).y - At(after, x, y).y) > 20 ? 1 : 0;
      }
    }
    return count;
  };
  EXPECT_GT(changed(0.6, 0.5, 0.75, 0.7), 500);
  EXPECT_EQ(changed(0.65, 0, 0.76, 0.3), 0);
}

TEST(SceneTest, GivesEveryFrameByItselfInEveryFormatAndSize) {
  const struct { int width, height; } sizes[] = {{2, 1}, {2, 2}, {3, 5}, {64, 480}, {500, 16}, {97, 63}, {322, 240}};
  constexpr std::uint8_t kGuard = 0xa5;
  for (const auto& size : sizes) {
    const int width = size.width, height = size.height;
    SCOPED_TRACE(std::to_string(width) + "x" + std::to_string(height));
    Scene scene({width, height, 3, 1});
    const auto next = [&](int number, Format format) {
      Bytes frame(FrameBytes(format, width, height) + 1, kGuard);
      scene.Render(number, format, frame.data());
      EXPECT_EQ(frame.back(), kGuard);
      frame.pop_back();
      return frame;
    };
    next(70, Format::kNv12);
    const Bytes planes = next(9, Format::kI420), nv12 = next(9, Format::kNv12);
    EXPECT_EQ(planes, Render({width, height, 3, 1}, 9, Format::kI420));
    EXPECT_NE(planes, next(10, Format::kI420));
    const auto luma = static_cast<std::size_t>(width * height), chroma = (planes.size() - luma) / 2;
    EXPECT_TRUE(std::equal(planes.begin(), planes.begin() + width * height, nv12.begin()));
    for (std::size_t i = 0; i < chroma; ++i) {
      ASSERT_EQ(nv12[luma + 2 * i], planes[luma + i]);
      ASSERT_EQ(nv12[luma + 2 * i + 1], planes[luma + chroma + i]);
    }
    if (width % 2 != 0) continue;
    const Bytes uyvy = next(9, Format::kUyvy);
    for (std::size_t i = 0; i < luma; ++i) ASSERT_EQ(uyvy[2 * i + 1], planes[i]);
  }
}

TEST(SceneTest, RefusesSettingsOutOfRange) {
  for (const Settings& settings :
       {Settings{1, 2}, Settings{2, 0}, Settings{16385, 2}, Settings{2, 2, 1, -1}, Settings{2, 2, 1, std::nan("")}}) {
    EXPECT_THROW(Scene scene(settings), std::invalid_argument);
  }
}

class PictureTest : public ToolTest {
 protected:
  /// A PNG that the tool has written.
  void Load(const std::string& name) {
    surface.reset(cairo_image_surface_create_from_png((directory / name).c_str()));
    ASSERT_EQ(cairo_surface_status(surface.get()), CAIRO_STATUS_SUCCESS) << name;
    width = cairo_image_surface_get_width(surface.get());
    height = cairo_image_surface_get_height(surface.get());
  }
  const std::uint8_t* Pixel(int x, int y) const {  // blue, green, red
    return cairo_image_surface_get_data(surface.get()) + y * cairo_image_surface_get_stride(surface.get()) + 4 * x;
  }
  bool IsInk(int x, int y) const { return Pixel(x, y)[1] < 80; }
  bool IsBlue(int x, int y) const { return Pixel(x, y)[0] > Pixel(x, y)[2] + 80; }
  /// The first row of the column for which the test holds; the height where none does.
  template <typename Test>
  int RowWhere(int x, Test test) const {
    int y = 0;
    while (y < height && !test(x, y)) ++y;
    return y;
  }

  vidproc::drawing::SurfacePtr surface;
  int width = 0, height = 0;
};

TEST_F(PictureTest, ComparesBothFramesUnderLabels) {
  ASSERT_EQ(Tool("pre --synthetic-size 640x360 --size 320x180 --denoise 1 --frames 3 --compare c.png").status, 0);
  ASSERT_NO_FATAL_FAILURE(Load("c.png"));
  const int column = width / 2, row = height / 2;
  EXPECT_NEAR(static_cast<double>(column) / row, 640 / 360.0, 0.2);
  for (const int left : {0, column + 4}) {
    for (const int top : {0, row}) {
      int bright = 0;
      for (int y = top; y < top + 26; ++y) {
        for (int x = left; x < left + 200; ++x) bright += Pixel(x, y)[1] > 200 ? 1 : 0;
      }
      EXPECT_GT(bright, 200) << left << " " << top;  // letters
      EXPECT_LT(bright, 2000) << left << " " << top;
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
  WriteFile(directory / "wide.y4m", "YUV4MPEG2 W160 H120 F30:1 Ip A2:1 C422 XCOLORRANGE=LIMITED\n" + frame);
  ASSERT_EQ(Tool("post wide.y4m --compare c.png").status, 0);
  ASSERT_NO_FATAL_FAILURE(Load("c.png"));
  int rows = 0;
  for (int y = 0; y < height / 2; ++y) rows += Pixel(20, y)[1] > 80 ? 1 : 0;  // but for a letter
  EXPECT_NEAR(width / 2.0 / rows, 160 * 2 / 120.0, 0.3);
}

TEST_F(PictureTest, DrawsBrightnessToScale) {
  ASSERT_EQ(Tool("exposure --synthetic-size 64x48 --plot p.png").status, 0);
  ASSERT_NO_FATAL_FAILURE(Load("p.png"));
  // The lamp is on at 1.5 s and out at 3.5 s of 5; out, the light is 0.55 of what it was, and black is at 16.
  const int left = 64, right = width - 24;
  const auto curve = [&](double seconds) {
    const int x = left + static_cast<int>((right - left) * seconds / 5) + 3;
    return RowWhere(x, [&](int px, int py) { return IsBlue(px, py); });
  };
  const int axis = RowWhere(left + 40, [&](int x, int y) { return IsInk(x, y) && IsInk(x + 1, y) && y > height / 2; });
  const int on = axis - curve(1.5), out = axis - curve(3.5);
  const double black = 16.0 / 255 * (axis - 40);
  EXPECT_NEAR((out - black) / (on - black), 0.55, 0.02);
  EXPECT_GT(on, (axis - 40) / 3);
}

TEST_F(PictureTest, DrawsTapsWhereTheyStand) {
  ASSERT_EQ(Tool("filters --from 128x96 --to 64x96 --filter gaussian --alignment corners --plot f.png").status, 0);
  ASSERT_NO_FATAL_FAILURE(Load("f.png"));
  // One tap of weight 1 at distance 0; all others lie on the line of weight 0.
  const auto highest = [&](int x) { return RowWhere(x, [&](int px, int py) { return IsBlue(px, py); }); };
  const int middle = (64 + 640 - 24) / 2;
  const int top = highest(middle);
  for (int x = 70; x < 620; ++x) {
    if (std::abs(x - middle) <= 6) continue;
    EXPECT_GT(highest(x), top + 200) << x;
  }
}

}  // namespace
