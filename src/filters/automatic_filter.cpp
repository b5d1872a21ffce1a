#include "filters/automatic_filter.h"

#include <algorithm>

namespace vidproc::filters {

KernelShape AutomaticShape(int up, int down, int taps) {
  if (up >= down) return taps == 4 ? Cubic(0, 0.5, 1) : Lanczos(3, 1);
  const double ratio = static_cast<double>(down) / up;
  // Beyond this the first zero of the kernel would lie outside the taps.
  return Cubic(0, 0.5, std::min((1 + ratio) / 2, (taps - 1) / 2.0));
}

}  // namespace vidproc::filters
