// A picture of one frame before and after, side by side at the same height, with a label over each.
#pragma once

#include <string>

#include "image.h"
#include "picture.h"

namespace vidproc::tool {

/// The taller of the two sets the height, so that detail lost or kept shows at full size. `colour` goes for both.
Image ComparePicture(const Picture& before, const Picture& after, const ColourTags& colour, const std::string& what);

}  // namespace vidproc::tool
