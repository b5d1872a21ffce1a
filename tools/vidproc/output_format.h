// How frames are to be written: container, codec and pixel format, by the ending of the name and by options.
#pragma once

#include "ffmpeg_handles.h"
#include "options.h"

namespace vidproc::tool {

struct OutputFormat {
  const AVOutputFormat* muxer = nullptr;
  const AVCodec* codec = nullptr;
  AVPixelFormat wanted = AV_PIX_FMT_NONE;  ///< by an option or the ending of raw frames; none: free
  bool isOnePicture = false;               ///< each frame replaces the one before
};

/// Throws ToolError with status 2 for what is not known or does not go together.
OutputFormat ChooseFormat(const OutputOptions& options);

/// The codec's format for frames that are `source` now.
AVPixelFormat CodecFormat(const OutputFormat& format, AVPixelFormat source, AVColorRange range);

/// Whether the muxer keeps frames' times; others hold frames at one rate.
bool KeepsTimes(const AVOutputFormat& muxer);

/// uyvy, i420, nv12, ... as in option texts, or FFmpeg's own names; none if it is not known.
AVPixelFormat ParsePixelFormat(const std::string& name);

/// The format that the ending of a file of raw frames tells; none for others.
AVPixelFormat RawFormatOf(const std::string& path);

}  // namespace vidproc::tool
