// Capture of FFmpeg's log; see ffmpeg_log.h.
#include "ffmpeg_log.h"

extern "C" {
#include <libavutil/log.h>
}

#include <array>
#include <cstdio>
#include <mutex>

namespace vidproc::tool {
namespace {

std::mutex complaintMutex;  // decoders log from their own threads
std::string complaint;

void KeepFirst(void*, int level, const char* format, va_list arguments) {
  if (level > AV_LOG_ERROR) return;
  std::array<char, 256> text{};
  std::vsnprintf(text.data(), text.size(), format, arguments);
  const std::lock_guard lock(complaintMutex);
  if (complaint.empty()) complaint = text.data();
  while (complaint.ends_with('\n') || complaint.ends_with('.')) complaint.pop_back();
}

}  // namespace

void CaptureFfmpegLog() { av_log_set_callback(KeepFirst); }

std::string FfmpegComplaint() {
  const std::lock_guard lock(complaintMutex);
  return complaint;
}

}  // namespace vidproc::tool
