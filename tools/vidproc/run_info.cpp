// info: what a bug report needs to say about the machine.
#include <cstdio>
#include <fstream>
#include <string>

#include "commands.h"
#include "ffmpeg_handles.h"

namespace vidproc::tool {
namespace {

constexpr const char* kLevels[] = {"scalar", "portable",   "sse2", "sse41", "avx2",
                                   "avx512", "avx512vbmi", "neon", "wasm"};

std::string ProcessorName() {
  std::ifstream file("/proc/cpuinfo");
  for (std::string line; std::getline(file, line);) {
    const std::size_t colon = line.find(": ");
    if (line.starts_with("model name") && colon != std::string::npos) return line.substr(colon + 2);
  }
  return "unknown";
}

}  // namespace

std::string LevelsHere() {
  const std::string inUse = vidproc_level();
  std::string names;
  for (const char* level : kLevels) {
    if (vidproc_cap_level(level) == VIDPROC_OK && vidproc_level() == std::string(level)) {
      if (!names.empty()) names += ' ';
      names += level;
    }
  }
  vidproc_cap_level(inUse.c_str());
  return names;
}

void RunInfo() {
  std::printf("vidproc       %s\n", vidproc_version_string());
  std::printf("processor     %s\n", ProcessorName().c_str());
  std::printf("levels        %s\n", LevelsHere().c_str());
  std::printf("level in use  %s\n", vidproc_level());
  std::printf("FFmpeg        libavformat %u.%u, libavcodec %u.%u, libavfilter %u.%u\n", avformat_version() >> 16,
              avformat_version() >> 8 & 255, avcodec_version() >> 16, avcodec_version() >> 8 & 255,
              avfilter_version() >> 16, avfilter_version() >> 8 & 255);
}

}  // namespace vidproc::tool
