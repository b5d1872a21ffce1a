// Frames as pictures to draw on, and pictures into PNG files.
#pragma once

extern "C" {
#include <libavutil/frame.h>
}

#include "file_io.h"
#include "scene/drawing.h"

namespace vidproc::tool {

/// The frame as RGB; its own fields tell what its samples mean.
drawing::Canvas ToCanvas(const AVFrame& frame);

/// Writes the picture as a PNG; the file stays open.
void WritePng(OutputFile& file, const drawing::Canvas& picture);

}  // namespace vidproc::tool
