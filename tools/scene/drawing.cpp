// See drawing.h.
#include "scene/drawing.h"

#include <new>
#include <numbers>
#include <stdexcept>

namespace vidproc::drawing {
namespace {

template <typename Handle>
Handle* OrBadAlloc(Handle* handle, cairo_status_t status) {
  if (status != CAIRO_STATUS_SUCCESS) throw std::bad_alloc();
  return handle;
}

void SetGradient(cairo_t* context, cairo_pattern_t* gradient, std::initializer_list<Stop> stops) {
  const PatternPtr pattern(gradient);
  for (const auto& [at, colour, alpha] : stops) {
    cairo_pattern_add_color_stop_rgba(gradient, at, colour.r / 255.0, colour.g / 255.0, colour.b / 255.0, alpha);
  }
  cairo_set_source(context, gradient);
}

}  // namespace

Canvas::Canvas(int width, int height)
    : surface(cairo_image_surface_create(CAIRO_FORMAT_RGB24, width, height)), context(cairo_create(surface.get())) {
  OrBadAlloc(surface.get(), cairo_surface_status(surface.get()));
  OrBadAlloc(context.get(), cairo_status(context.get()));
  // Letters keep their shape at every size and place.
  cairo_font_options_t* options = cairo_font_options_create();
  cairo_font_options_set_antialias(options, CAIRO_ANTIALIAS_GRAY);
  cairo_font_options_set_hint_style(options, CAIRO_HINT_STYLE_NONE);
  cairo_font_options_set_hint_metrics(options, CAIRO_HINT_METRICS_OFF);
  cairo_set_font_options(context.get(), options);
  cairo_font_options_destroy(options);
  cairo_set_line_cap(context.get(), CAIRO_LINE_CAP_ROUND);
  cairo_set_line_join(context.get(), CAIRO_LINE_JOIN_ROUND);
}

std::uint8_t* Canvas::Pixels() {
  cairo_surface_flush(surface.get());
  return cairo_image_surface_get_data(surface.get());
}

std::string Png(const Canvas& picture) {
  std::string bytes;
  const auto append = [](void* closure, const unsigned char* data, unsigned int size) {
    static_cast<std::string*>(closure)->append(reinterpret_cast<const char*>(data), size);
    return CAIRO_STATUS_SUCCESS;
  };
  const cairo_status_t status = cairo_surface_write_to_png_stream(picture.Surface(), append, &bytes);
  if (status != CAIRO_STATUS_SUCCESS) throw std::runtime_error(cairo_status_to_string(status));
  return bytes;
}

void SetColour(cairo_t* context, Rgb colour, double alpha) {
  cairo_set_source_rgba(context, colour.r / 255.0, colour.g / 255.0, colour.b / 255.0, alpha);
}

void SetLinear(cairo_t* context, Point from, Point to, std::initializer_list<Stop> stops) {
  SetGradient(context, cairo_pattern_create_linear(from.x, from.y, to.x, to.y), stops);
}

void SetRadial(cairo_t* context, Point centre, double radius, std::initializer_list<Stop> stops) {
  SetGradient(context, cairo_pattern_create_radial(centre.x, centre.y, 0, centre.x, centre.y, radius), stops);
}

void Rectangle(cairo_t* context, Point from, Point to) {
  cairo_rectangle(context, from.x, from.y, to.x - from.x, to.y - from.y);
}

void Ellipse(cairo_t* context, Point centre, double radiusX, double radiusY) {
  cairo_matrix_t before;
  cairo_get_matrix(context, &before);
  cairo_translate(context, centre.x, centre.y);
  cairo_scale(context, radiusX, radiusY);
  cairo_new_sub_path(context);
  cairo_arc(context, 0, 0, 1, 0, 2 * std::numbers::pi);
  cairo_close_path(context);
  cairo_set_matrix(context, &before);
}

void Line(cairo_t* context, Point from, Point to) {
  cairo_move_to(context, from.x, from.y);
  cairo_line_to(context, to.x, to.y);
}

void Fill(cairo_t* context, Rgb colour, double alpha) {
  SetColour(context, colour, alpha);
  cairo_fill(context);
}

void Stroke(cairo_t* context, double width, Rgb colour, double alpha) {
  SetColour(context, colour, alpha);
  cairo_set_line_width(context, width);
  cairo_stroke(context);
}

void SetFont(cairo_t* context, double size, bool bold) {
  cairo_select_font_face(context, "DejaVu Sans", CAIRO_FONT_SLANT_NORMAL,
                         bold ? CAIRO_FONT_WEIGHT_BOLD : CAIRO_FONT_WEIGHT_NORMAL);
  cairo_set_font_size(context, size);
}

double TextWidth(cairo_t* context, const std::string& text) {
  cairo_text_extents_t extents;
  cairo_text_extents(context, text.c_str(), &extents);
  return extents.x_advance;
}

void Text(cairo_t* context, Point start, const std::string& text) {
  cairo_move_to(context, start.x, start.y);
  cairo_show_text(context, text.c_str());
  cairo_new_path(context);  // the text's end would begin the next line
}

void TextCentred(cairo_t* context, Point middle, const std::string& text) {
  Text(context, {middle.x - TextWidth(context, text) / 2, middle.y}, text);
}

}  // namespace vidproc::drawing
