// How a row of one plane is scaled horizontally: the form of the kernel that is exact for its bank and positions, laid
// out in memory of its own.
#pragma once

#include <cstdint>
#include <vector>

#include "kernels/kernel_table.h"
#include "kernels/row_jobs.h"

namespace vidproc {

struct HorizontalRowRequest {
  const std::int16_t (*bank)[kMaxTaps];  ///< by phase
  std::int32_t taps;                     ///< 8 or 16
  std::int32_t shift;                    ///< every phase adds up to 1 << shift: 6 or 7
  const RowPosition* positions;          ///< of every output: the sample under the centre tap, the phase
  std::int32_t outputs;                  ///< samples, or pairs
  std::int32_t inputs;
  std::int32_t step;   ///< bytes from a sample to the next: 1, or 2 for Cb Cr pairs
  ByteRowShape shape;  ///< of the kernels that the plan is for; {}: the general form only
};

class HorizontalRowLayout {
 public:
  /// @throws std::bad_alloc
  explicit HorizontalRowLayout(const HorizontalRowRequest& request);
  HorizontalRowLayout(HorizontalRowLayout&&) = default;
  HorizontalRowLayout& operator=(HorizontalRowLayout&&) = default;

  /// Lives as long as the layout, and points into it.
  const HorizontalRowPlan& Plan() const { return plan; }

 private:
  std::vector<RowPosition> positions;
  std::vector<std::int16_t> bank;
  HorizontalRowPlan plan{};
};

}  // namespace vidproc
