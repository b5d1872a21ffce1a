#include "plan/horizontal_row_layout.h"

#include <algorithm>

namespace vidproc {

HorizontalRowLayout::HorizontalRowLayout(const HorizontalRowRequest& request)
    : positions(request.positions, request.positions + request.outputs),
      bank(request.bank[0], request.bank[0] + kPhases * kMaxTaps) {
  const std::int32_t centre = request.taps / 2 - 1;
  for (RowPosition& position : positions) {
    // Farther out all taps weigh the same repeated sample.
    position.source = std::clamp(position.source, -request.taps / 2, request.inputs + centre) - centre;
  }
  plan.outputs = request.outputs;
  plan.step = request.step;
  plan.shift = request.shift;
  plan.taps = request.taps;
  plan.positions = positions.data();
  plan.coefficients = bank.data();
}

}  // namespace vidproc
