// Where the picture goes when frames of one size become frames of another.
#pragma once

#include "options.h"
#include "picture.h"

namespace vidproc::tool {

struct FrameShape {
  Rectangle source;         ///< what is taken of an input frame
  Size output;              ///< of the frames to make
  Rectangle target;         ///< where it goes; black around it
  AVRational sampleAspect;  ///< of the output
};

/// Positions are even, so that chroma samples stay whole, and sizes that are not asked for too where possible.
FrameShape ShapeFrames(const StreamInfo& input, Size request, Fit fit);

}  // namespace vidproc::tool
