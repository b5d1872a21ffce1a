// What one run of the deblocking kernel works on.
#pragma once

#include "kernels/scale_job.h"

namespace vidproc {

struct DeblockJob {
  std::uint8_t* frame;  ///< packed rows of 2 * width bytes, filtered in place
  std::int32_t width;
  std::int32_t height;
  Form form;
  bool testPattern;              ///< filter a checkerboard instead of the frame's own picture
  std::int16_t edgeSensitivity;  ///< how fast the filter lets go as the step across an edge grows
  std::int16_t verticalTaps[8];
  std::int16_t horizontalTaps[8];
  const std::int32_t* sources;  ///< source sample of every output sample
  StripMemory strip;
  std::uint8_t* rowsAbove;  ///< room for the last 3 rows of the strip before, as they were: 3 * (2 * width + kRowSlack)
};

}  // namespace vidproc
