// FFmpeg explains failures in its log only; this keeps the first error line of the demuxer or a video decoder as a
// reason and prints nothing.
#pragma once

#include <string>

namespace vidproc::tool {

void CaptureFfmpegLog();

/// The first error that was logged about the input, without its line end; empty when there was none.
std::string InputComplaint();
void ForgetInputComplaint();

}  // namespace vidproc::tool
