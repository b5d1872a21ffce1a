// info: what a bug report needs to say about the machine.
#include <cstdio>
#include <fstream>
#include <string>

#include "commands.h"
#include "ffmpeg_handles.h"

namespace vidproc::tool {
namespace {

std::string ProcessorName() {
  std::ifstream file("/proc/cpuinfo");
  for (std::string line; std::getline(file, line);) {
    const std::size_t colon = line.find(": ");
    if (line.starts_with("model name") && colon != std::string::npos) return line.substr(colon + 2);
  }
  return "unknown";
}

}  // namespace

void RunInfo() {
  std::string available, missing;
  for (const Level level : kAllLevels) {
    (IsLevelAvailable(level) ? available : missing) += std::string(" ") + LevelName(level);
  }
  std::printf("vidproc       %s\n", VIDPROC_VERSION);
  std::printf("processor     %s\n", ProcessorName().c_str());
  std::printf("levels       %s\n", available.c_str());
  std::printf("not here     %s\n", missing.c_str());
  std::printf("level in use  %s\n", LevelName(LevelInUse()));
  std::printf("FFmpeg        libavformat %u.%u, libavcodec %u.%u, libswscale %u.%u\n", avformat_version() >> 16,
              avformat_version() >> 8 & 255, avcodec_version() >> 16, avcodec_version() >> 8 & 255,
              swscale_version() >> 16, swscale_version() >> 8 & 255);
}

}  // namespace vidproc::tool
