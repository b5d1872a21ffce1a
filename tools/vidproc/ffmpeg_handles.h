// FFmpeg's objects as owning pointers, and its error numbers as text.
#pragma once

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavfilter/avfilter.h>
#include <libavformat/avformat.h>
#include <libavutil/frame.h>
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
  void operator()(AVFilterGraph* graph) const { avfilter_graph_free(&graph); }
  void operator()(AVBufferPool* pool) const { av_buffer_pool_uninit(&pool); }
  void operator()(AVFormatContext* context) const {
    if (context->iformat != nullptr) {
      avformat_close_input(&context);
    } else {
      avformat_free_context(context);
    }
  }
  void operator()(AVIOContext* context) const {
    av_freep(&context->buffer);
    avio_context_free(&context);
  }
};

template <typename Object>
using FfmpegPtr = std::unique_ptr<Object, FfmpegDeleter>;

using FramePtr = FfmpegPtr<AVFrame>;
using PacketPtr = FfmpegPtr<AVPacket>;
using CodecPtr = FfmpegPtr<AVCodecContext>;
using FormatPtr = FfmpegPtr<AVFormatContext>;
using IoPtr = FfmpegPtr<AVIOContext>;

/// Options of a demuxer, muxer or codec.
class Dictionary {
 public:
  Dictionary() = default;
  ~Dictionary() { av_dict_free(&entries); }
  Dictionary(const Dictionary&) = delete;
  Dictionary& operator=(const Dictionary&) = delete;
  void Set(const char* key, const std::string& value) { av_dict_set(&entries, key, value.c_str(), 0); }
  AVDictionary** Address() { return &entries; }

 private:
  AVDictionary* entries = nullptr;
};

/// The object itself, or std::bad_alloc for FFmpeg's null.
template <typename T>
T* OrBadAlloc(T* object) {
  if (object == nullptr) throw std::bad_alloc();
  return object;
}

inline FramePtr NewFrame() { return FramePtr(OrBadAlloc(av_frame_alloc())); }

inline std::string FfmpegError(int code) {
  std::array<char, AV_ERROR_MAX_STRING_SIZE> text{};
  av_strerror(code, text.data(), text.size());
  return text.data();
}

}  // namespace vidproc::tool
