// FFmpeg's frames as the library's, without copying.
#pragma once

#include <vidproc/vidproc.hpp>

#include "ffmpeg_handles.h"
#include "picture.h"

namespace vidproc::tool {

/// The formats that both know.
inline constexpr AVPixelFormat kLibraryFormats[] = {AV_PIX_FMT_YUV420P, AV_PIX_FMT_YUV422P, AV_PIX_FMT_NV12,
                                                    AV_PIX_FMT_UYVY422, AV_PIX_FMT_YUYV422};

bool IsLibraryFormat(AVPixelFormat format);
/// `format` is one of kLibraryFormats.
FrameInfo InfoOf(AVPixelFormat format, Size size, AVChromaLocation location);

/// A part of a frame, whose left and top are even; the frame's format is one of kLibraryFormats.
Input InputOf(const AVFrame& frame, const Rectangle& part);
Output OutputOf(AVFrame& frame, const Rectangle& part);

/// Frames of one format and size, whose memory is used again.
class FramePool {
 public:
  /// @param rowAlignment  of the length of rows in bytes; 1: rows without gaps
  FramePool(AVPixelFormat format, Size size, int rowAlignment = 64);
  FramePtr Take();

 private:
  AVPixelFormat format;
  Size size;
  int rowAlignment;
  FfmpegPtr<AVBufferPool> pool;
};

}  // namespace vidproc::tool
