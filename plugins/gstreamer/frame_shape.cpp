#include "frame_shape.h"

#include <algorithm>
#include <utility>

#include "video_frame.h"

namespace vidproc::gstreamer {
namespace {

constexpr const char* kPixelShape = "pixel-aspect-ratio";

struct Fraction {
  gint up = 1;
  gint down = 1;
};

/// Of a picture with a size and a shape of pixels, as it is shown. Out of proportion where the sizes overflow.
Fraction ShownAs(gint width, gint height, const Fraction& pixel) {
  Fraction shape;
  if (!gst_util_fraction_multiply(width, height, pixel.up, pixel.down, &shape.up, &shape.down)) return {width, height};
  return shape;
}

Fraction PixelShape(const GstStructure* structure) {
  Fraction pixel;
  gst_structure_get_fraction(structure, kPixelShape, &pixel.up, &pixel.down);
  return pixel;
}

Fraction ChoosePixelShape(GstStructure* structure, const Fraction& wanted) {
  if (gst_structure_has_field(structure, kPixelShape)) {
    gst_structure_fixate_field_nearest_fraction(structure, kPixelShape, wanted.up, wanted.down);
  }
  return PixelShape(structure);
}

gint ChooseLength(GstStructure* structure, const char* field, gint wanted) {
  gst_structure_fixate_field_nearest_int(structure, field, wanted);
  gst_structure_get_int(structure, field, &wanted);
  return wanted;
}

/// length x ratio, to the nearest.
gint Scaled(gint length, const Fraction& ratio) {
  const guint64 scaled = gst_util_uint64_scale_int_round(static_cast<guint64>(length), ratio.up, ratio.down);
  return static_cast<gint>(std::clamp<guint64>(scaled, 1, G_MAXINT));
}

/// The height that is nearest to the input's decides on the width, and that, which may be limited, on the height.
void ChooseSize(const GstVideoInfo& from, GstStructure* to) {
  const Fraction pixelBefore = {GST_VIDEO_INFO_PAR_N(&from), GST_VIDEO_INFO_PAR_D(&from)};
  const Fraction shown = ShownAs(GST_VIDEO_INFO_WIDTH(&from), GST_VIDEO_INFO_HEIGHT(&from), pixelBefore);
  gint width = 0, height = 0;
  const bool hasSize = gst_structure_get_int(to, "width", &width) && gst_structure_get_int(to, "height", &height);
  if (hasSize) {
    ChoosePixelShape(to, ShownAs(height, width, shown));
    return;
  }
  const Fraction pixel = ChoosePixelShape(to, pixelBefore);
  const Fraction sides = ShownAs(shown.up, shown.down, {pixel.down, pixel.up});
  GstStructure* const trial = gst_structure_copy(to);
  height = ChooseLength(trial, "height", GST_VIDEO_INFO_HEIGHT(&from));
  gst_structure_free(trial);
  width = ChooseLength(to, "width", Scaled(height, sides));
  ChooseLength(to, "height", Scaled(width, {sides.down, sides.up}));
}

/// What is not named follows from the height of a frame, but this one's colours stay what they were, and so does the
/// place of its chroma unless something else was asked for.
void NameTags(const GstCaps* caps, const GstVideoInfo& from, GstStructure* to) {
  gint height = 0;
  gst_structure_get_int(to, "height", &height);
  gchar* const colours = gst_video_colorimetry_to_string(&from.colorimetry);
  gchar* const site = gst_video_chroma_site_to_string(from.chroma_site);
  for (const auto& [field, value] : {std::pair{"colorimetry", colours}, std::pair{"chroma-site", site}}) {
    const bool isNamed = gst_structure_has_field(gst_caps_get_structure(caps, 0), field);
    const bool changes = isNamed || height != GST_VIDEO_INFO_HEIGHT(&from);
    if (changes && value != nullptr && !gst_structure_has_field(to, field)) {
      gst_structure_set(to, field, G_TYPE_STRING, value, nullptr);
    }
    g_free(value);
  }
}

}  // namespace

GstCaps* OtherSide(const GstCaps* caps) {
  GstCaps* const other = gst_caps_copy(caps);
  GstCaps* const any = FrameCaps(2, 1);
  const GstStructure* const anyFrame = gst_caps_get_structure(any, 0);
  for (guint i = 0; i < gst_caps_get_size(other); ++i) {
    GstStructure* const structure = gst_caps_get_structure(other, i);
    for (const char* field : {"format", "width", "height"}) {
      gst_structure_set_value(structure, field, gst_structure_get_value(anyFrame, field));
    }
    gst_structure_set(structure, kPixelShape, GST_TYPE_FRACTION_RANGE, 1, G_MAXINT, G_MAXINT, 1, nullptr);
    gst_structure_remove_field(structure, "chroma-site");
  }
  gst_caps_unref(any);
  return other;
}

GstCaps* Choose(const GstCaps* caps, GstCaps* choices) {
  GstVideoInfo from;
  if (gst_caps_is_empty(choices) || !gst_video_info_from_caps(&from, caps)) return choices;
  GstCaps* const chosen = gst_caps_make_writable(gst_caps_truncate(choices));
  GstStructure* const to = gst_caps_get_structure(chosen, 0);
  gst_structure_fixate_field_string(to, "format", gst_video_format_to_string(GST_VIDEO_INFO_FORMAT(&from)));
  ChooseSize(from, to);
  NameTags(caps, from, to);
  return gst_caps_fixate(chosen);
}

}  // namespace vidproc::gstreamer
