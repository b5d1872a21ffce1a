// Capture of FFmpeg's log; see ffmpeg_log.h.
#include "ffmpeg_log.h"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/log.h>
}

#include <array>
#include <cstdio>
#include <mutex>

namespace vidproc::tool {
namespace {

std::mutex complaintMutex;  // decoders log from their own threads
std::string complaint;

/// What audio decoders, encoders, the muxer and converters say is nothing about the frames that come in.
bool IsAboutInputFrames(const void* context) {
  if (context == nullptr) return false;
  const AVClass* kind = *static_cast<const AVClass* const*>(context);
  if (kind == avformat_get_class()) return static_cast<const AVFormatContext*>(context)->iformat != nullptr;
  if (kind != avcodec_get_class()) return false;
  const auto* codec = static_cast<const AVCodecContext*>(context);
  return codec->codec_type == AVMEDIA_TYPE_VIDEO && av_codec_is_decoder(codec->codec) != 0;
}

void KeepFirst(void* context, int level, const char* format, va_list arguments) {
  if (level > AV_LOG_ERROR || !IsAboutInputFrames(context)) return;
  std::array<char, 256> text{};
  std::vsnprintf(text.data(), text.size(), format, arguments);
  const std::lock_guard lock(complaintMutex);
  if (complaint.empty()) complaint = text.data();
  while (complaint.ends_with('\n') || complaint.ends_with('.')) complaint.pop_back();
}

}  // namespace

void CaptureFfmpegLog() { av_log_set_callback(KeepFirst); }

std::string InputComplaint() {
  const std::lock_guard lock(complaintMutex);
  return complaint;
}

void ForgetInputComplaint() {
  const std::lock_guard lock(complaintMutex);
  complaint.clear();
}

}  // namespace vidproc::tool
