// info: what a bug report needs to say about the machine.
#include <cstdio>
#include <fstream>
#include <string>

#include "commands.h"
#include "ffmpeg_handles.h"
#include "levels/cpu_level.h"

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

std::string LevelsHere() {
  std::string names;
  for (const Level level : kAllLevels) {
    if (!IsLevelAvailable(level)) continue;
    if (!names.empty()) names += ' ';
    names += LevelName(level);
  }
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
