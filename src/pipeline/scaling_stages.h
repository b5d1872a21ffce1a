// A scaling step of a component: the vertical pass, then the horizontal one. Each gives bytes.
#pragma once

#include <algorithm>
#include <vector>

#include "kernels/kernel_table.h"
#include "kernels/row_jobs.h"
#include "pipeline/axis_pass.h"
#include "pipeline/stage.h"
#include "plan/horizontal_row_layout.h"

namespace vidproc {

class VerticalPass : public Stage {
 public:
  /// @throws std::bad_alloc
  VerticalPass(Stage& input, const AxisPass& pass, const KernelTable& kernels);

 protected:
  void MakeRow(std::int32_t y, std::uint8_t* out) override;

 private:
  std::int32_t InputRow(std::int32_t row) const { return std::clamp(row, 0, lastRow) >> rowShift; }
  void TakeHeldRows(const PhasePosition& position, VerticalRowJob& job);
  void TakeGivenRows(std::int32_t y, const VerticalTaps& phase, VerticalRowJob& job) const;

  Stage& input;
  const KernelTable& kernels;
  const std::vector<PhasePosition> positions;
  const std::int32_t rowShift;  ///< 1: every input row stands twice
  const std::int32_t lastRow;
  const std::int32_t precisionBits;
  VerticalTaps taps[kPhases];
  std::int32_t topDown[kPhases][kMaxVerticalTaps];  ///< a phase's taps in the order of their rows
};

class HorizontalPass : public Stage {
 public:
  /// @throws std::bad_alloc
  HorizontalPass(Stage& input, const AxisPass& pass, const KernelTable& kernels);

 protected:
  void MakeRow(std::int32_t y, std::uint8_t* out) override;

 private:
  Stage& input;
  const KernelTable& kernels;
  const HorizontalRowLayout layout;
};

}  // namespace vidproc
