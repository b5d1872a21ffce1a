// The parts of the scene that move; see moving_picture.h.
#include <array>
#include <cmath>
#include <numbers>

#include "scene/moving_picture.h"

namespace vidproc::scene {
namespace {

using namespace drawing;

constexpr Point kTorso{302, 354};  ///< room to the left and right of the middle, and above the desk's level
constexpr double kPi = std::numbers::pi;
constexpr Rgb kSkin{222, 172, 142}, kSkinLight{240, 198, 170}, kSkinDark{168, 114, 90}, kSkinDeep{134, 84, 66};
constexpr Rgb kHair{62, 42, 32}, kHairLight{126, 88, 60}, kCloth{58, 84, 120}, kClothDark{30, 46, 72};
constexpr Rgb kBlack{24, 20, 20};

/// Jumper with knitted stripes, and the collar.
void PaintTorso(cairo_t* context) {
  cairo_move_to(context, -300, 0);
  cairo_curve_to(context, -300, -190, -268, -262, -150, -292);
  cairo_curve_to(context, -90, -308, -66, -330, -60, -352);
  cairo_line_to(context, 60, -352);
  cairo_curve_to(context, 66, -330, 90, -308, 150, -292);
  cairo_curve_to(context, 268, -262, 300, -190, 300, 0);
  cairo_close_path(context);
  SetLinear(context, {-300, -300}, {300, -60}, {{0, {92, 122, 160}}, {0.4, kCloth}, {1, kClothDark}});
  cairo_fill_preserve(context);
  cairo_clip(context);
  for (double y = -330; y < 0; y += 13) {
    cairo_move_to(context, -310, y + 50);
    cairo_curve_to(context, -150, y, 150, y, 310, y + 50);
  }
  Stroke(context, 1.6, {176, 190, 206}, 0.55);
}

void PaintNeck(cairo_t* context) {
  cairo_move_to(context, -58, -450);
  cairo_curve_to(context, -52, -390, -60, -340, -84, -316);
  cairo_curve_to(context, -40, -268, 40, -268, 84, -316);
  cairo_curve_to(context, 60, -340, 52, -390, 58, -450);
  cairo_close_path(context);
  SetLinear(context, {0, -430}, {0, -290}, {{0, kSkinDeep}, {0.4, kSkinDark}, {1, kSkin}});
  cairo_fill(context);
}

void PaintHairBehind(cairo_t* context) {
  cairo_move_to(context, -136, -540);
  cairo_curve_to(context, -150, -740, 150, -740, 136, -540);
  cairo_curve_to(context, 144, -470, 140, -400, 124, -364);
  cairo_curve_to(context, 90, -350, -90, -350, -124, -364);
  cairo_curve_to(context, -140, -400, -144, -470, -136, -540);
  Fill(context, kHair);
}

void FacePath(cairo_t* context) {
  cairo_move_to(context, -112, -560);
  cairo_curve_to(context, -112, -690, 112, -690, 112, -560);
  cairo_curve_to(context, 112, -470, 70, -404, 0, -398);
  cairo_curve_to(context, -70, -404, -112, -470, -112, -560);
  cairo_close_path(context);
}

void PaintFace(cairo_t* context) {
  for (const double side : {-1.0, 1.0}) {
    Ellipse(context, {side * 114, -536}, 17, 30);
    Fill(context, kSkinDark);
  }
  FacePath(context);
  SetRadial(context, {-36, -580}, 190, {{0, kSkinLight}, {0.55, kSkin}, {1, kSkinDark}});
  cairo_fill(context);
  for (const double side : {-1.0, 1.0}) {  // cheeks
    Ellipse(context, {side * 62, -500}, 40, 30);
    SetRadial(context, {side * 62, -500}, 38, {{0, {222, 128, 112}, 0.45}, {1, {222, 128, 112}, 0}});
    cairo_fill(context);
  }
  cairo_move_to(context, 2, -556);  // the nose's shaded side
  cairo_curve_to(context, 8, -530, 24, -506, 18, -494);
  cairo_curve_to(context, 8, -484, -8, -484, -16, -494);
  Stroke(context, 4, kSkinDark, 0.8);
}

void PaintEyes(cairo_t* context, double seconds) {
  const double lids = std::fmod(seconds + 1, 2.6) < 0.12 ? 0.15 : 1;
  for (const double side : {-1.0, 1.0}) {
    const double x = side * 46;
    Ellipse(context, {x, -562}, 20, 11 * lids);
    Fill(context, {244, 240, 236});
    Ellipse(context, {x + 2, -562}, 9, 9.5 * lids);
    Fill(context, {70, 96, 92});
    Ellipse(context, {x + 2, -562}, 4, 4.5 * lids);
    Fill(context, kBlack);
    Ellipse(context, {x - 1, -565}, 2, 2 * lids);
    Fill(context, {255, 255, 255});
    cairo_move_to(context, x - 21, -562);
    cairo_curve_to(context, x - 10, -562 - 15 * lids, x + 10, -562 - 15 * lids, x + 21, -562);
    Stroke(context, 3, kBlack);
    cairo_move_to(context, x - 28, -590 + side * 2);
    cairo_curve_to(context, x - 10, -602, x + 12, -600, x + 28, -588 - side * 2);
    Stroke(context, 6, kHair);
    Ellipse(context, {x, -560}, 35, 30);  // spectacles
    Stroke(context, 1.8, {46, 44, 50});
  }
  cairo_move_to(context, -11, -562);
  cairo_curve_to(context, -6, -570, 6, -570, 11, -562);
  Stroke(context, 1.8, {46, 44, 50});
}

void PaintMouth(cairo_t* context, double seconds) {
  const double open = 3 + 9 * std::fabs(std::sin(7.3 * seconds) * std::sin(1.9 * seconds));
  cairo_move_to(context, -42, -462);
  cairo_curve_to(context, -18, -456, 18, -456, 42, -462);
  cairo_curve_to(context, 22, -434 + open, -22, -434 + open, -42, -462);
  Fill(context, {172, 84, 82});
  cairo_move_to(context, -30, -457);
  cairo_curve_to(context, -14, -454, 14, -454, 30, -457);
  cairo_curve_to(context, 16, -450 + open, -16, -450 + open, -30, -457);
  Fill(context, {238, 226, 220});
}

/// Fringe and strands as thin as hairs, which sway a little behind the head.
void PaintHair(cairo_t* context, double seconds) {
  cairo_move_to(context, -118, -540);
  cairo_curve_to(context, -128, -640, -80, -660, -30, -640);
  cairo_curve_to(context, 30, -634, 104, -640, 118, -540);
  cairo_curve_to(context, 150, -720, 60, -728, 0, -722);
  cairo_curve_to(context, -60, -728, -150, -720, -118, -540);
  Fill(context, kHair);
  for (int strand = 0; strand < 36; ++strand) {
    const double side = strand % 2 == 0 ? -1 : 1, place = strand / 36.0;
    const double sway = 5 * std::sin(2.3 * seconds + strand);
    cairo_move_to(context, side * 10 * place, -718 + 3 * place);
    cairo_curve_to(context, side * (60 + 70 * place), -724 + 20 * place, side * (118 + 26 * place), -620,
                   side * (122 + 22 * place) + sway, -480 + 84 * std::sin(3.0 * strand));
    Stroke(context, 0.9, strand % 3 == 0 ? kHair : kHairLight);
  }
}

void PaintHead(cairo_t* context, double seconds) {
  cairo_save(context);
  cairo_translate(context, 8 * std::sin(2.9 * seconds), -382 + 4 * std::sin(5 * seconds));
  cairo_rotate(context, 0.06 * std::sin(1.7 * seconds + 0.6));
  cairo_translate(context, 0, 420);
  PaintHairBehind(context);
  PaintNeck(context);
  PaintFace(context);
  PaintEyes(context, seconds);
  PaintMouth(context, seconds);
  PaintHair(context, seconds);
  cairo_restore(context);
}

/// Palm and fingers around the wrist at (0, 0), upright.
void HandPath(cairo_t* context, double spread) {
  Line(context, {0, 6}, {0, -62});
  constexpr std::array<double, 4> kLengths = {66, 78, 72, 56};
  for (int finger = 0; finger < 4; ++finger) {
    const double angle = (finger - 1.4) * spread, x = 16.0 * (finger - 1.5);
    const double length = kLengths[static_cast<std::size_t>(finger)];
    Line(context, {x, -58}, {x + length * std::sin(angle), -58 - length * std::cos(angle)});
  }
  cairo_move_to(context, -20, -20);
  cairo_curve_to(context, -44, -36, -52, -52, -58, -76);
}

void PaintArm(cairo_t* context, double seconds) {
  cairo_save(context);
  cairo_translate(context, 268, -40);
  cairo_rotate(context, 0.16 + 0.2 * std::sin(2 * kPi * 0.9 * seconds));
  cairo_move_to(context, -52, 20);
  cairo_line_to(context, -30, -218);
  cairo_line_to(context, 30, -218);
  cairo_line_to(context, 52, 20);
  SetLinear(context, {-50, 0}, {50, 0}, {{0, {84, 112, 150}}, {0.5, kCloth}, {1, kClothDark}});
  cairo_fill(context);
  Rectangle(context, {-31, -226}, {31, -206});
  Fill(context, kClothDark);
  Rectangle(context, {-21, -262}, {21, -220});
  Fill(context, kSkin);
  cairo_translate(context, 0, -262);
  cairo_rotate(context, 0.1 * std::sin(2 * kPi * 0.9 * seconds - 0.7));
  const double spread = 0.13 + 0.03 * std::sin(2 * seconds);
  Ellipse(context, {0, -34}, 37, 46);
  Fill(context, kSkinDark);
  HandPath(context, spread);
  Stroke(context, 20, kSkinDark);
  HandPath(context, spread);
  Stroke(context, 17, kSkin);
  Ellipse(context, {0, -34}, 35, 44);
  SetRadial(context, {-10, -44}, 60, {{0, kSkinLight}, {1, kSkin}});
  cairo_fill(context);
  cairo_restore(context);
}

}  // namespace

Presenter::Presenter(double scale) {
  const auto pixels = [scale](double length) { return static_cast<int>(std::ceil(length * scale)) + 2; };
  torso.reset(cairo_image_surface_create(CAIRO_FORMAT_ARGB32, pixels(2 * kTorso.x), pixels(kTorso.y)));
  cairo_surface_set_device_scale(torso.get(), scale, scale);
  const ContextPtr context(cairo_create(torso.get()));
  cairo_translate(context.get(), kTorso.x, kTorso.y);
  PaintTorso(context.get());
}

void Presenter::Paint(cairo_t* context, double seconds) const {
  const double sway = 26 * std::sin(1.7 * seconds) + 8 * std::sin(4.1 * seconds);
  cairo_save(context);
  cairo_translate(context, -50 + 0.6 * sway, 0);
  cairo_set_source_surface(context, torso.get(), -kTorso.x, -kTorso.y);
  cairo_paint(context);
  PaintArm(context, seconds);
  cairo_translate(context, 0.4 * sway, 0);
  PaintHead(context, seconds);
  cairo_restore(context);
}

void PaintClockHands(cairo_t* context, double seconds) {
  const Point centre{-390, -700};
  const struct {
    double turn, length, width;
    Rgb colour;
  } hands[] = {{(10.6 + seconds / 3600) / 12, 42, 6, kBlack},
               {0.6 + seconds / 3600, 60, 4, kBlack},
               {seconds / 60, 68, 1.4, {190, 40, 36}}};
  for (const auto& [turn, length, width, colour] : hands) {
    const double x = std::sin(2 * kPi * turn), y = -std::cos(2 * kPi * turn);
    Line(context, {centre.x - 0.18 * length * x, centre.y - 0.18 * length * y},
         {centre.x + length * x, centre.y + length * y});
    Stroke(context, width, colour);
  }
  Ellipse(context, centre, 5, 5);
  Fill(context, kBlack);
}

}  // namespace vidproc::scene
