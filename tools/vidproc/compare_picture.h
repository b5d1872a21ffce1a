// A picture of one frame before and after: both side by side in the same shape, and under each its middle enlarged,
// where noise and fine detail show.
#pragma once

extern "C" {
#include <libavutil/frame.h>
}

#include <string>

#include "scene/drawing.h"

namespace vidproc::tool {

/// The frames' own fields tell what their samples mean; `what` says how the second was made.
drawing::Canvas ComparePicture(const AVFrame& before, const AVFrame& after, const std::string& what);

}  // namespace vidproc::tool
