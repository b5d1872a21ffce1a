// FFmpeg's objects as owning pointers, and its error numbers as text.
#pragma once

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/frame.h>
#include <libswscale/swscale.h>
}

#include <array>
#include <cerrno>
#include <memory>
#include <new>
#include <string>

namespace vidproc::tool {

struct FfmpegDeleter {
  void operator()(AVFrame* frame) const { av_frame_free(&frame); }
  void operator()(AVPacket* packet) const { av_packet_free(&packet); }
  void operator()(AVCodecContext* context) const { avcodec_free_context(&context); }
  void operator()(SwsContext* context) const { sws_freeContext(context); }
};

struct InputFormatCloser {
  void operator()(AVFormatContext* context) const { avformat_close_input(&context); }
};

/// Closes what the muxer may still hold open; success paths close it themselves to see the result.
struct OutputFormatCloser {
  void operator()(AVFormatContext* context) const {
    avio_closep(&context->pb);
    avformat_free_context(context);
  }
};

using FramePtr = std::unique_ptr<AVFrame, FfmpegDeleter>;
using PacketPtr = std::unique_ptr<AVPacket, FfmpegDeleter>;
using CodecPtr = std::unique_ptr<AVCodecContext, FfmpegDeleter>;
using ScalerPtr = std::unique_ptr<SwsContext, FfmpegDeleter>;
using InputFormatPtr = std::unique_ptr<AVFormatContext, InputFormatCloser>;
using OutputFormatPtr = std::unique_ptr<AVFormatContext, OutputFormatCloser>;

/// The object itself, or std::bad_alloc for FFmpeg's null.
template <typename T>
T* OrBadAlloc(T* object) {
  if (object == nullptr) throw std::bad_alloc();
  return object;
}

inline std::string FfmpegError(int code) {
  std::array<char, AV_ERROR_MAX_STRING_SIZE> text{};
  av_strerror(code, text.data(), text.size());
  return text.data();
}

}  // namespace vidproc::tool
