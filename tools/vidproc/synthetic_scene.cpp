// A camera scene made here, for trying things without a clip: a presenter who sways before a wall with books and a
// poster, a turning star and a running text line, sensor noise, and a lamp that goes out and comes back. The same size
// and seed give the same frames.
#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>

#include "bitmap_font.h"
#include "frame_reader.h"
#include "scene_canvas.h"

namespace vidproc::tool {
namespace {

constexpr int kRate = 30;
constexpr double kPi = std::numbers::pi;

/// Small generator of our own, so that every standard library gives the same scene.
class Random {
 public:
  explicit Random(std::uint32_t seed) : state(seed * 2654435769U + 0x9e3779b9U) {}
  std::uint32_t Next() {
    state += 0x9e3779b9U;
    std::uint32_t mixed = state;
    mixed = (mixed ^ (mixed >> 16)) * 0x85ebca6bU;
    mixed = (mixed ^ (mixed >> 13)) * 0xc2b2ae35U;
    return mixed ^ (mixed >> 16);
  }
  double Unit() { return Next() / 4294967296.0; }
  double Between(double low, double high) { return low + (high - low) * Unit(); }

 private:
  std::uint32_t state;
};

/// Light on the scene: a lamp goes out 2.2 s into every 6 s and comes back 2 s later.
double LightAt(double seconds) {
  const double phase = std::fmod(seconds, 6.0);
  const double dimmed = std::clamp(std::min(phase - 2.2, 4.2 - phase) / 0.2, 0.0, 1.0);
  return 1 - 0.45 * dimmed;
}

class SyntheticScene final : public FrameSource {
 public:
  SyntheticScene(Size size, std::uint32_t seed)
      : width(size.width), height(size.height), room(size), view(size), noiseRandom(seed) {
    info.name = "synthetic scene";
    info.size = size;
    info.frameRate = {kRate, 1};
    info.timeBase = {1, kRate};
    info.sampleAspect = {1, 1};
    info.colour = {AVCOL_PRI_BT709, AVCOL_TRC_BT709, AVCOL_SPC_BT709, AVCHROMA_LOC_LEFT};
    PaintRoom();
    for (int& value : noise) {
      const double sum = noiseRandom.Unit() + noiseRandom.Unit() + noiseRandom.Unit() + noiseRandom.Unit() - 2;
      value = static_cast<int>(std::lround(sum * std::sqrt(3.0) * 256));  // unit deviation in 256ths
    }
  }

  bool Next(AVFrame& frame) override {
    const double seconds = static_cast<double>(frames) / kRate;
    view.bytes = room.bytes;
    PaintStar(seconds);
    PaintPresenter(seconds);
    PaintTicker(seconds);
    Expose(LightAt(seconds));
    DescribeFrame(info, AV_PIX_FMT_UYVY422, view.bytes.data(), frames++, frame);
    return true;
  }

 private:
  void PaintRoom() {
    room.Paint({0, 0}, {width, height}, [&](double x, double y, Yuv& out) {
      const double fall = std::hypot((x - 0.55 * width) / width, (y - 0.25 * height) / height);
      out = {190 - 85 * fall + 2 * std::sin(x * 40 * kPi / width), 121, 136};
      return 1.0;
    });
    PaintBooks();
    PaintPoster();
  }

  void PaintBooks() {
    Random random(7);
    const double shelfHeight = 0.19 * height;
    for (int shelf = 0; shelf < 4; ++shelf) {
      const double floor = (0.24 + 0.21 * shelf) * height;
      for (double x = 0.02 * width; x < 0.25 * width;) {
        const double thickness = random.Between(0.008, 0.02) * width;
        const double top = floor - shelfHeight * random.Between(0.62, 0.95);
        const Yuv cover{random.Between(45, 200), random.Between(90, 165), random.Between(90, 170)};
        room.Rectangle({x, top}, {x + thickness, floor}, cover);
        const double band = top + 0.15 * shelfHeight;
        room.Rectangle({x + 1, band}, {x + thickness - 1, band + 0.02 * height}, {225, 120, 135});
        x += thickness + 1;
      }
      room.Rectangle({0.01 * width, floor}, {0.265 * width, floor + 0.015 * height}, {80, 112, 145});
    }
  }

  void PaintPoster() {
    const double left = 0.69 * width, top = 0.07 * height, right = 0.97 * width;
    room.Rectangle({left, top}, {right, 0.5 * height}, {40, 128, 128});
    room.Rectangle({left + 2, top + 2}, {right - 2, 0.5 * height - 2}, {222, 126, 129});
    const std::array<const char*, 6> lines = {"VIDPROC",
                                              "sharp edges",
                                              "and fine print",
                                              "8x8 16x16 640x480",
                                              "The quick brown fox jumps",
                                              "over 13 lazy dogs, 0123456789 = 45?"};
    double y = top + 0.035 * height;
    for (const char* line : lines) {
      const std::string text(line);
      const double dot = 0.26 * width / (static_cast<double>(text.size()) * kGlyphAdvance);
      room.Text({left + 0.01 * width, y}, dot, {35, 134, 122}, text);
      y += kLineAdvance * dot + 0.004 * height;
    }
  }

  void PaintStar(double seconds) {
    const Point centre{0.83 * width, 0.73 * height};
    const double radius = 0.15 * height;
    view.Paint({centre.x - radius, centre.y - radius}, {centre.x + radius, centre.y + radius},
               [&](double x, double y, Yuv& out) {
                 const double distance = std::hypot(x - centre.x, y - centre.y);
                 const double angle = std::atan2(y - centre.y, x - centre.x) + 0.4 * seconds;
                 const double spoke = std::sin(18 * angle) * distance / 18;  // pixels to the nearest edge, nearly
                 out = {40 + 180 * Coverage(spoke), 128, 128};
                 return Coverage(radius - distance);
               });
  }

  void PaintPresenter(double seconds) {
    const double sway = 0.035 * width * std::sin(1.7 * seconds) + 0.01 * width * std::sin(4.1 * seconds);
    const Point head{0.47 * width + sway, 0.34 * height + 0.008 * height * std::sin(5 * seconds)};
    const double unit = 0.01 * height;
    const Point body{0.47 * width + 0.6 * sway, 0.98 * height};
    const Point bodyRadius{32 * unit, 46 * unit};
    view.Paint({body.x - bodyRadius.x, body.y - bodyRadius.y}, {body.x + bodyRadius.x, body.y},
               [&](double x, double y, Yuv& out) {
                 const double distance = std::hypot((x - body.x) / bodyRadius.x, (y - body.y) / bodyRadius.y);
                 if (distance > 1.01) return 0.0;
                 const double weave =
                     std::sin((x - body.x) * 2 * kPi / (3.2 * unit)) * std::sin((y - body.y) * 2 * kPi / (3.2 * unit));
                 out = {88 + 38 * weave, 148, 112};
                 return Coverage((1 - distance) * bodyRadius.x);
               });
    const Yuv skin{158, 110, 152}, hair{46, 124, 134}, dark{40, 128, 130};
    view.Rectangle({head.x - 5 * unit, head.y + 10 * unit}, {head.x + 5 * unit, head.y + 24 * unit}, {138, 111, 151});
    view.Ellipse({head.x, head.y - 3 * unit}, {14.5 * unit, 17 * unit}, hair);
    view.Ellipse(head, {12.5 * unit, 16 * unit}, skin);
    const double lids = std::fmod(seconds + 1, 2.6) < 0.12 ? 0.3 : 1.6;
    for (const double side : {-1.0, 1.0}) {
      view.Ellipse({head.x + side * 5 * unit, head.y - 2 * unit}, {2.6 * unit, lids * unit}, {215, 128, 128});
      view.Ellipse({head.x + side * 5 * unit, head.y - 2 * unit}, {1.1 * unit, 0.8 * lids * unit}, dark);
      view.Rectangle({head.x + side * 5 * unit - 3 * unit, head.y - 6 * unit},
                     {head.x + side * 5 * unit + 3 * unit, head.y - 5 * unit}, hair);
    }
    view.Ellipse({head.x, head.y + 8 * unit}, {4 * unit, (1 + std::fabs(std::sin(9 * seconds))) * unit},
                 {95, 115, 165});
  }

  void PaintTicker(double seconds) {
    static const std::string kLine = "A running line of text   +++   moving detail shows what a filter does   +++   ";
    const double dot = 0.0085 * height;
    const double period = static_cast<double>(kLine.size()) * kGlyphAdvance * dot;
    view.Rectangle({0, 0.91 * height}, {width, 1.1 * height}, {38, 140, 118});
    const double start = -std::fmod(seconds * 0.14 * width, period);
    for (double x = start; x < width; x += period) view.Text({x, 0.928 * height}, dot, {210, 122, 132}, kLine);
  }

  /// Light, then the noise of a sensor that turns its gain up in the dark.
  void Expose(double light) {
    const int gain = static_cast<int>(light * 256);
    const int deviation = static_cast<int>((2.2 + 2 * (1 - light)) * 256);
    const std::size_t rowBytes = 2 * static_cast<std::size_t>(info.size.width);
    for (std::size_t y = 0; y < static_cast<std::size_t>(info.size.height); ++y) {
      std::size_t next = noiseRandom.Next();
      std::uint8_t* row = view.bytes.data() + y * rowBytes;
      for (std::size_t i = 0; i < rowBytes; i += 2) {
        const int chromaNoise = noise[next++ % noise.size()] * deviation / 2;
        const int lumaNoise = noise[next++ % noise.size()] * deviation;
        const int chroma = 128 + (((row[i] - 128) * gain + 128) >> 8) + ((chromaNoise + (1 << 15)) >> 16);
        const int luma = 16 + (((row[i + 1] - 16) * gain + 128) >> 8) + ((lumaNoise + (1 << 15)) >> 16);
        row[i] = static_cast<std::uint8_t>(std::clamp(chroma, 16, 240));
        row[i + 1] = static_cast<std::uint8_t>(std::clamp(luma, 16, 235));
      }
    }
  }

  double width;
  double height;
  SceneCanvas room;  ///< what stands still
  SceneCanvas view;
  Random noiseRandom;
  std::array<int, 65536> noise{};
  std::int64_t frames = 0;
};

}  // namespace

std::unique_ptr<FrameSource> OpenSyntheticScene(Size size, std::uint32_t seed) {
  return std::make_unique<SyntheticScene>(size, seed);
}

}  // namespace vidproc::tool
