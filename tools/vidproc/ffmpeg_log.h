// FFmpeg explains failures in its log only; this keeps the first error lines as reasons and prints nothing.
#pragma once

#include <string>

namespace vidproc::tool {

void CaptureFfmpegLog();

/// The first error that a demuxer or a video decoder has logged, without its line end and other control characters;
/// empty when there was none.
std::string InputComplaint();
/// The same of encoders and muxers.
std::string OutputComplaint();
void ForgetDecoderComplaint();

}  // namespace vidproc::tool
