// Capture of FFmpeg's log; see ffmpeg_log.h.
#include "ffmpeg_log.h"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/log.h>
}

#include <algorithm>
#include <array>
#include <cstdio>
#include <mutex>
#include <string>

namespace vidproc::tool {
namespace {

struct Complaints {
  std::mutex mutex;  // decoders and encoders log from their own threads
  std::string demuxer;
  std::string decoder;
  std::string output;
};

Complaints& Kept() {
  static auto* const kComplaints = new Complaints;  // outlives every thread
  return *kComplaints;
}

/// What audio decoders and converters say is nothing about the frames: null.
std::string* PlaceFor(const void* context) {
  if (context == nullptr) return nullptr;
  const AVClass* kind = *static_cast<const AVClass* const*>(context);
  if (kind == avformat_get_class()) {
    return static_cast<const AVFormatContext*>(context)->iformat != nullptr ? &Kept().demuxer : &Kept().output;
  }
  if (kind != avcodec_get_class()) return nullptr;
  const auto* codec = static_cast<const AVCodecContext*>(context);
  if (codec->codec_type != AVMEDIA_TYPE_VIDEO) return nullptr;
  return av_codec_is_decoder(codec->codec) != 0 ? &Kept().decoder : &Kept().output;
}

void KeepFirst(void* context, int level, const char* format, va_list arguments) {
  if (level > AV_LOG_ERROR) return;
  const std::lock_guard lock(Kept().mutex);
  std::string* const place = PlaceFor(context);
  if (place == nullptr || !place->empty()) return;
  std::array<char, 256> text{};
  std::vsnprintf(text.data(), text.size(), format, arguments);
  *place = text.data();
  while (place->ends_with('\n') || place->ends_with('.')) place->pop_back();
  std::replace_if(
      place->begin(), place->end(), [](char byte) { return byte < ' ' || byte > '~'; }, '?');
}

}  // namespace

void CaptureFfmpegLog() { av_log_set_callback(KeepFirst); }

std::string InputComplaint() {
  const std::lock_guard lock(Kept().mutex);
  return Kept().demuxer.empty() ? Kept().decoder : Kept().demuxer;
}

std::string OutputComplaint() {
  const std::lock_guard lock(Kept().mutex);
  return Kept().output;
}

void ForgetDecoderComplaint() {
  const std::lock_guard lock(Kept().mutex);
  Kept().decoder.clear();
}

}  // namespace vidproc::tool
