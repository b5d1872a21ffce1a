// What all our pictures are drawn with: Cairo's objects as owning pointers, colours, gradients and text.
#pragma once

#include <cairo.h>

#include <cstdint>
#include <initializer_list>
#include <memory>
#include <string>

namespace vidproc::drawing {

struct CairoDeleter {
  void operator()(cairo_t* context) const { cairo_destroy(context); }
  void operator()(cairo_surface_t* surface) const { cairo_surface_destroy(surface); }
  void operator()(cairo_pattern_t* pattern) const { cairo_pattern_destroy(pattern); }
};
using ContextPtr = std::unique_ptr<cairo_t, CairoDeleter>;
using SurfacePtr = std::unique_ptr<cairo_surface_t, CairoDeleter>;
using PatternPtr = std::unique_ptr<cairo_pattern_t, CairoDeleter>;

struct Point {
  double x = 0;
  double y = 0;
};

struct Rgb {
  std::uint8_t r = 0;
  std::uint8_t g = 0;
  std::uint8_t b = 0;
};

/// A colour of a gradient, `at` 0 to 1 of its way.
struct Stop {
  double at;
  Rgb colour;
  double alpha = 1;
};

/// An RGB picture, 32 bits a pixel with the first 8 unused, and the context that draws on it.
class Canvas {
 public:
  /// Black. Throws std::bad_alloc.
  Canvas(int width, int height);
  cairo_t* Context() const { return context.get(); }
  cairo_surface_t* Surface() const { return surface.get(); }
  /// The first row, once everything that was drawn is in it; changes of it show in what is drawn later.
  std::uint8_t* Pixels();
  void PixelsChanged() { cairo_surface_mark_dirty(surface.get()); }
  int RowBytes() const { return cairo_image_surface_get_stride(surface.get()); }

 private:
  SurfacePtr surface;
  ContextPtr context;
};

/// The picture as a PNG file's bytes. Throws std::runtime_error.
std::string Png(const Canvas& picture);

void SetColour(cairo_t* context, Rgb colour, double alpha = 1);
void SetLinear(cairo_t* context, Point from, Point to, std::initializer_list<Stop> stops);
void SetRadial(cairo_t* context, Point centre, double radius, std::initializer_list<Stop> stops);

/// Paths.
void Rectangle(cairo_t* context, Point from, Point to);
void Ellipse(cairo_t* context, Point centre, double radiusX, double radiusY);
void Line(cairo_t* context, Point from, Point to);

/// Fills or strokes the path and drops it; lines have round ends.
void Fill(cairo_t* context, Rgb colour, double alpha = 1);
void Stroke(cairo_t* context, double width, Rgb colour, double alpha = 1);

/// Text in DejaVu Sans, or what fontconfig has in its place; sizes in units of the context.
void SetFont(cairo_t* context, double size, bool bold = false);
double TextWidth(cairo_t* context, const std::string& text);
/// From the left end of the base line, in the font and the colour that are set.
void Text(cairo_t* context, Point start, const std::string& text);
void TextCentred(cairo_t* context, Point middle, const std::string& text);

}  // namespace vidproc::drawing
