// FFmpeg explains failures in its log only; this keeps the first error line as a reason and prints nothing.
#pragma once

#include <string>

namespace vidproc::tool {

void CaptureFfmpegLog();

/// The first error that FFmpeg logged, without its line end; empty when there was none.
std::string FfmpegComplaint();

}  // namespace vidproc::tool
