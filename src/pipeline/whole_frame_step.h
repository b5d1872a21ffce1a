// Work that needs a whole frame, as 2vuy: the frame is written from stages, worked on, and read by stages again.
#pragma once

#include <vector>

#include "pipeline/frame_sink.h"
#include "pipeline/source_stages.h"

namespace vidproc {

/// A frame of packed 2vuy rows.
struct PackedFrame {
  PackedFrame(std::int32_t rowBytes, std::int32_t rows)
      : rowBytes(rowBytes), bytes(static_cast<std::size_t>(rowBytes) * static_cast<std::size_t>(rows)) {}
  std::int32_t rowBytes;
  std::vector<std::uint8_t> bytes;
};

class WholeFrameStep {
 public:
  /// Takes the frame from `rows`; luma and chroma have as many of them. @throws std::bad_alloc
  WholeFrameStep(std::int32_t width, std::int32_t rowBytes, const PictureRows& rows, const KernelTable& kernels)
      : input(rowBytes, rows.luma->Shape().height),
        sink({PixelFormat::kUyvy, ChromaSiting::kLeft, width, rows.luma->Shape().height}, rows, kernels) {}
  virtual ~WholeFrameStep() = default;
  WholeFrameStep(const WholeFrameStep&) = delete;
  WholeFrameStep& operator=(const WholeFrameStep&) = delete;

  void Run() {
    sink.Write({{input.bytes.data()}, {input.rowBytes}});
    const PackedFrame& result = Work(input);
    output->Attach(result.bytes.data(), result.rowBytes, false);
  }

  /// What reads the result.
  PackedSource* output = nullptr;

 protected:
  /// @return the result, which may be the frame itself.
  virtual const PackedFrame& Work(PackedFrame& frame) = 0;
  PackedFrame input;

 private:
  FrameSink sink;
};

}  // namespace vidproc
