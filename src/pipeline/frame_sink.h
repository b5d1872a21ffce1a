// Where rows go: the planes of the caller's frame, in any format. Luma and chroma rows are asked for in turn, so that
// stages which serve both work on neighbouring rows.
#pragma once

#include <vector>

#include "kernels/kernel_table.h"
#include "pipeline/frame_shape.h"
#include "pipeline/stage.h"

namespace vidproc {

/// The stages that a picture's rows come from: chroma as pairs, or as planes of their own.
struct PictureRows {
  Stage* luma = nullptr;
  Stage* pairs = nullptr;
  Stage* cb = nullptr;
  Stage* cr = nullptr;
};

class FrameSink {
 public:
  /// @throws std::bad_alloc
  FrameSink(const FrameShape& shape, const PictureRows& rows, const KernelTable& kernels);
  void Write(const OutputPlanes& planes);

 private:
  void WriteChroma(const OutputPlanes& planes, std::int32_t y);
  void WritePacked(const OutputPlanes& planes, std::int32_t y);
  void FinishOddRow(std::uint8_t* lastPair, const std::uint8_t* luma, const std::uint8_t* pairs, bool hasRoom) const;
  const std::uint8_t* PairsRow(std::int32_t y);

  const FrameShape shape;
  const PictureRows rows;
  const KernelTable& kernels;
  std::vector<std::uint8_t> joined;  ///< a row of pairs from two planes
};

}  // namespace vidproc
