// The kernel of the automatic filter: chosen by ratio and taps.
#pragma once

#include "filters/kernel_shape.h"

namespace vidproc::filters {

/// `up`:`down` is the ratio of the output's size to the input's, `taps` 4, 8 or 16.
KernelShape AutomaticShape(int up, int down, int taps);

}  // namespace vidproc::filters
