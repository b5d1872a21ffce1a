// Deblocking of the 8 x 8 grid, each component on its own: chroma of 4:2:0 lies in the frame's upper rows and is
// repeated below, so that its blocks are 8 of its own rows high.
#pragma once

#include <vector>

#include "kernels/deblock_job.h"
#include "pipeline/whole_frame_step.h"

namespace vidproc {

class DeblockStep : public WholeFrameStep {
 public:
  /// `rows` has as many rows of chroma as of luma. @throws std::bad_alloc
  DeblockStep(std::int32_t level, const PictureRows& rows, const KernelTable& kernels);

 protected:
  const PackedFrame& Work(PackedFrame& frame) override;

 private:
  const KernelTable& kernels;
  std::vector<std::int32_t> sources;
  std::vector<std::int16_t> rowMemory;
  std::vector<std::int16_t> columnMemory;
  std::vector<std::uint8_t> outColumns;
  std::vector<std::uint8_t> rowsAbove;
  DeblockJob job{};
};

}  // namespace vidproc
