// GStreamer's frames as the library's.
#pragma once

#include <gst/video/video.h>

#include <vidproc/vidproc.hpp>

namespace vidproc::gstreamer {

/// Caps of every format of the library, in the order of preference, from the given size up. The caller owns them.
GstCaps* FrameCaps(int smallestWidth, int smallestHeight);

/// Of a frame whose caps are among FrameCaps. Chroma that no tag places is beside the left pixel of a pair.
FrameInfo InfoOf(const GstVideoInfo& info);

/// Of a mapped frame; borrowed from it.
Input InputOf(const GstVideoFrame& frame);
Output OutputOf(const GstVideoFrame& frame);

}  // namespace vidproc::gstreamer
