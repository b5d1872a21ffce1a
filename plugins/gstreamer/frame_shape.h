// Caps on both sides of an element that changes format and size, but no colours, times or fields.
#pragma once

#include <gst/video/video.h>

namespace vidproc::gstreamer {

/// What the other side of the element may be: `caps` with any format, size, shape of pixels and place of chroma. The
/// caller owns them.
GstCaps* OtherSide(const GstCaps* caps);

/// Chooses one of `choices`, which is consumed: the format of `caps` or the first one, and the size that comes nearest
/// to theirs and shows the picture in its shape. Where sizes imply tags that `caps` do not name, these are named.
GstCaps* Choose(const GstCaps* caps, GstCaps* choices);

}  // namespace vidproc::gstreamer
