// The numbers are chosen by scripts/search_banks, which scales pictures down and up again and measures the luma PSNR;
// docs/banks.md has its figures. The optimum is flat: where it is, the numbers are those that let taps fall to zero.
// At 2:1 the first zero of the cubic lies on the outermost of 4 taps, which leaves the mean of two rows, and the second
// zero of the sinc on the outermost of 8.
#include "filters/automatic_filter.h"

#include <algorithm>

namespace vidproc::filters {

const AutomaticRule kAutomaticRule = {.cubicC = 0.6, .cubicStretch = 0.75, .lobes = 3, .lanczosStretch = 0.875};

KernelShape AutomaticShape(const AutomaticRule& rule, int up, int down, int taps) {
  const double ratio = static_cast<double>(down) / up;
  if (taps == 4) return Cubic(0, rule.cubicC, std::max(1.0, rule.cubicStretch * ratio));
  // Wider, the taps would hold no side lobe.
  const double widest = (taps - 2) / 2.0;
  return Lanczos(rule.lobes, std::clamp(rule.lanczosStretch * ratio, 1.0, widest));
}

}  // namespace vidproc::filters
