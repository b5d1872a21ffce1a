// The part of the scene that stands still; see moving_picture.h.
#include <array>
#include <cmath>
#include <cstdint>
#include <numbers>
#include <string>

#include "scene/moving_picture.h"

namespace vidproc::scene {
namespace {

using namespace drawing;

constexpr double kFar = 20000;  ///< beyond the edge of any picture
constexpr Rgb kPaper{244, 240, 230}, kInk{52, 50, 54}, kRed{176, 48, 44}, kShadow{40, 30, 24};

/// Numbers that look like chance, the same on every machine.
class Chance {
 public:
  double Between(double low, double high) {
    state = state * 1664525U + 1013904223U;
    return low + (high - low) * (state >> 8) / (1 << 24);
  }
  std::uint8_t Byte(double low, double high) { return static_cast<std::uint8_t>(Between(low, high)); }

 private:
  std::uint32_t state = 7;
};

void PaintWall(cairo_t* context) {
  SetRadial(context, {-420, -760}, 1500, {{0, {226, 214, 197}}, {0.45, {193, 181, 166}}, {1, {112, 106, 104}}});
  cairo_paint(context);
}

/// Bright sky behind slats and their cords.
void PaintBlind(cairo_t* context) {
  Rectangle(context, {-790, -850}, {-532, -318});
  Fill(context, kShadow, 0.25);
  Rectangle(context, {-796, -858}, {-540, -326});
  Fill(context, {232, 229, 222});
  Rectangle(context, {-782, -844}, {-554, -340});
  SetLinear(context, {0, -844}, {0, -340}, {{0, {198, 219, 240}}, {0.7, {236, 240, 240}}, {1, {188, 204, 176}}});
  cairo_fill(context);
  for (double y = -840; y < -340; y += 9) Line(context, {-782, y}, {-554, y + 1});
  Stroke(context, 2.6, {150, 152, 156});
  for (const double x : {-730.0, -668.0, -606.0}) Line(context, {x, -844}, {x, -340});
  Stroke(context, 1, {92, 94, 98});
}

void PaintCalendar(cairo_t* context) {
  Rectangle(context, {452, -868}, {772, -584});
  Fill(context, kShadow, 0.3);
  Rectangle(context, {446, -874}, {766, -590});
  Fill(context, kPaper);
  Rectangle(context, {446, -874}, {766, -832});
  Fill(context, kRed);
  SetFont(context, 27, true);
  SetColour(context, kPaper);
  TextCentred(context, {606, -843}, "NOVEMBER");
  const std::array<const char*, 7> days = {"Mon", "Tue", "Wed", "Thu", "Fri", "Sat", "Sun"};
  for (int column = 0; column < 7; ++column) {
    const double x = 458 + 43 * column;
    SetFont(context, 13);
    SetColour(context, column < 5 ? kInk : kRed);
    TextCentred(context, {x + 19, -814}, days[static_cast<std::size_t>(column)]);
    for (int row = 0; row < 5; ++row) {
      const double y = -806 + 41 * row;
      const int day = 7 * row + column - 1;
      Rectangle(context, {x, y}, {x + 39, y + 38});
      Stroke(context, 0.8, kInk, 0.6);
      if (day < 1 || day > 30) continue;
      SetFont(context, 15, true);
      SetColour(context, column < 5 ? kInk : kRed);
      Text(context, {x + 4, y + 16}, std::to_string(day));
      SetFont(context, 8);
      if (day % 4 == 1) Text(context, {x + 4, y + 32}, day % 3 == 0 ? "review" : "call 9:30");
    }
  }
}

void PaintBook(cairo_t* context, Chance& chance, Point foot, double thickness, double height) {
  const Rgb cover{chance.Byte(40, 190), chance.Byte(40, 150), chance.Byte(40, 160)};
  const Rgb dark{static_cast<std::uint8_t>(cover.r / 2), static_cast<std::uint8_t>(cover.g / 2),
                 static_cast<std::uint8_t>(cover.b / 2)};
  const double end = foot.x + thickness;
  Rectangle(context, {foot.x, foot.y - height}, {end, foot.y});
  SetLinear(context, foot, {end, foot.y}, {{0, dark}, {0.4, cover}, {1, dark}});
  cairo_fill(context);
  for (const double band : {0.1, 0.86}) {
    Line(context, {foot.x + 2, foot.y - band * height}, {end - 2, foot.y - band * height});
  }
  Stroke(context, 2.5, {224, 190, 110}, 0.9);
  if (thickness < 20) return;
  static constexpr std::array<const char*, 5> kTitles = {"Optics", "Travels", "Signals", "Gardens", "Letters"};
  cairo_save(context);
  cairo_translate(context, foot.x + thickness / 2 + 5, foot.y - 0.16 * height);
  cairo_rotate(context, -std::numbers::pi / 2);
  SetFont(context, 15);
  SetColour(context, {236, 224, 196});
  Text(context, {0, 0}, kTitles[static_cast<std::size_t>(chance.Between(0, 4.999))]);
  cairo_restore(context);
}

void PaintShelves(cairo_t* context) {
  Chance chance;
  Rectangle(context, {430, -566}, {790, -104});
  SetLinear(context, {430, 0}, {790, 0}, {{0, {74, 56, 44}}, {1, {46, 36, 32}}});
  cairo_fill(context);
  for (const double floor : {-350.0, -130.0}) {
    for (double x = 446; x < 760;) {
      const double thickness = chance.Between(13, 34);
      if (x + thickness > 774) break;
      PaintBook(context, chance, {x, floor}, thickness, chance.Between(130, 192));
      x += thickness + chance.Between(0.5, 2);
    }
    Rectangle(context, {430, floor}, {790, floor + 14});
    Fill(context, {134, 98, 68});
  }
  Rectangle(context, {422, -580}, {798, -564});
  Fill(context, {142, 104, 72});
}

/// Leaves and stalks as thin as hairs.
void PaintPlant(cairo_t* context) {
  Chance chance;
  for (int leaf = 0; leaf < 64; ++leaf) {
    const double reach = chance.Between(-150, 150), rise = chance.Between(120, 290);
    const double foot = -650 + chance.Between(-14, 14);
    cairo_move_to(context, foot, -200);
    cairo_curve_to(context, foot + 0.1 * reach, -200 - 0.9 * rise, -650 + 0.6 * reach, -200 - 1.15 * rise, -650 + reach,
                   -200 - 0.75 * rise);
    Stroke(context, chance.Between(0.7, 4), {chance.Byte(40, 96), chance.Byte(96, 150), chance.Byte(40, 70)});
  }
  cairo_move_to(context, -705, -206);
  cairo_line_to(context, -595, -206);
  cairo_line_to(context, -612, -104);
  cairo_line_to(context, -688, -104);
  SetLinear(context, {-705, 0}, {-595, 0}, {{0, {150, 84, 58}}, {0.35, {206, 128, 92}}, {1, {104, 54, 40}}});
  cairo_fill(context);
}

void PaintClockFace(cairo_t* context) {
  const Point centre{-390, -700};
  Ellipse(context, {centre.x + 5, centre.y + 7}, 86, 86);
  Fill(context, kShadow, 0.25);
  Ellipse(context, centre, 86, 86);
  Fill(context, {58, 58, 62});
  Ellipse(context, centre, 78, 78);
  SetRadial(context, {centre.x - 20, centre.y - 24}, 120, {{0, {252, 250, 244}}, {1, {214, 210, 202}}});
  cairo_fill(context);
  SetFont(context, 16, true);
  for (int tick = 0; tick < 60; ++tick) {
    const double angle = tick * std::numbers::pi / 30, x = std::sin(angle), y = -std::cos(angle);
    const double inner = tick % 5 == 0 ? 68 : 72;
    Line(context, {centre.x + inner * x, centre.y + inner * y}, {centre.x + 75 * x, centre.y + 75 * y});
    Stroke(context, tick % 5 == 0 ? 2 : 0.8, kInk);
    if (tick % 5 != 0) continue;
    TextCentred(context, {centre.x + 56 * x, centre.y + 56 * y + 6}, std::to_string(tick == 0 ? 12 : tick / 5));
  }
}

void PaintMug(cairo_t* context) {
  cairo_save(context);
  cairo_translate(context, -440, 0);
  Ellipse(context, {4, -62}, 74, 14);
  Fill(context, kShadow, 0.35);
  cairo_new_sub_path(context);
  cairo_arc(context, 48, -112, 26, -1.3, 1.3);
  Stroke(context, 11, {196, 200, 206});
  Rectangle(context, {-44, -160}, {44, -66});
  Ellipse(context, {0, -66}, 44, 10);
  SetLinear(context, {-44, 0}, {44, 0}, {{0, {150, 156, 166}}, {0.3, {240, 242, 244}}, {1, {128, 132, 142}}});
  cairo_fill(context);
  Ellipse(context, {0, -160}, 44, 10);
  Fill(context, {62, 40, 28});
  cairo_restore(context);
}

/// The desk's grain is fine and nearly level, as what a vertical filter of few taps finds hardest.
void PaintDesk(cairo_t* context) {
  Rectangle(context, {-kFar, -106}, {kFar, kFar});
  SetLinear(context, {0, -106}, {0, 0}, {{0, {150, 104, 68}}, {0.12, {176, 126, 86}}, {1, {108, 72, 48}}});
  cairo_fill(context);
  Chance chance;
  for (int line = 0; line < 40; ++line) {
    const double x = chance.Between(-900, 700), y = chance.Between(-100, 4), length = chance.Between(120, 500);
    cairo_move_to(context, x, y);
    cairo_curve_to(context, x + 0.3 * length, y - 3, x + 0.6 * length, y + 4, x + length, y);
    Stroke(context, chance.Between(0.6, 1.6), {80, 50, 32}, 0.6);
  }
}

}  // namespace

void PaintRoom(cairo_t* context) {
  PaintWall(context);
  PaintBlind(context);
  PaintClockFace(context);
  PaintCalendar(context);
  PaintShelves(context);
  PaintPlant(context);
  PaintDesk(context);
  PaintMug(context);
}

}  // namespace vidproc::scene
