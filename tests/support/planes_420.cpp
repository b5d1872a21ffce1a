// The 4:2:0 form of one frame, in the library and in the reference.
#include "support/planes_420.h"

namespace testing_support {

void Execute420(void* handle, PlanePair& in, PlanePair& out) {
  const auto& p = *static_cast<const VideoProcessor*>(handle);
  VidProc420InterleavedExecute(handle, in.luma.Live(), in.chroma.Live(), out.luma.Live(), out.chroma.Live(), p.inWidth,
                               p.inHeight, in.lumaSize.Stride(), in.chromaSize.Stride(), p.outWidth, p.outHeight,
                               out.lumaSize.Stride(), out.chromaSize.Stride(), 64, 0);
}

std::vector<std::uint8_t> RunReference420(const VideoProcessor& fields, PlanePair& in, PlanePair& out) {
  std::vector<std::uint8_t> staged(fields.inHeight * fields.inStride);
  std::vector<std::uint8_t> scaled(fields.outHeight * fields.outStride);
  reference::StageNv12({in.luma.Expected(), in.chroma.Expected(), in.lumaSize.stride, in.chromaSize.stride},
                       fields.inWidth, fields.inHeight, staged.data());
  reference::StreamState unused;
  RunReference(fields, kKernels[0], unused, staged.data(), scaled.data());
  reference::UnstageNv12(scaled.data(), fields.outWidth, fields.outHeight,
                         {out.luma.Expected(), out.chroma.Expected(), out.lumaSize.stride, out.chromaSize.stride});
  return scaled;
}

}  // namespace testing_support
