// The history of a stream whose settings change.
#pragma once

#include "kernels/kernel_table.h"
#include "pipeline/denoise_stage.h"

namespace vidproc {

/// The denoising stages of a picture: of luma, then of pairs, or of Cb and of Cr; null where there are none.
using Denoisers = DenoiseStage* [3];

/// Moves what both keep of the frame before. The pictures have the same size and sampling; a format that has its chroma
/// in pairs and one that has it in planes continue each other.
void MoveHistory(const Denoisers& from, const Denoisers& to, const KernelTable& kernels) noexcept;

}  // namespace vidproc
