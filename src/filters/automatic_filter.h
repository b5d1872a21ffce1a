// The kernel of the automatic filter: one rule for every ratio and tap count.
#pragma once

#include "filters/kernel_shape.h"

namespace vidproc::filters {

/// With 4 taps a cubic with B = 0, with 8 and 16 a Lanczos kernel. On downscales it is stretched by the ratio times a
/// factor below 1: a little aliasing costs less than the blur that would avoid all of it.
struct AutomaticRule {
  double cubicC, cubicStretch;
  double lobes, lanczosStretch;
};

extern const AutomaticRule kAutomaticRule;

/// `up`:`down` is the ratio of the output's size to the input's, `taps` 4, 8 or 16.
KernelShape AutomaticShape(const AutomaticRule& rule, int up, int down, int taps);

}  // namespace vidproc::filters
