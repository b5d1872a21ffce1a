// Clips in containers: odd ones made byte by byte, and those that the tool has made examined by libavformat.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "tools/vidproc/ffmpeg_handles.h"

namespace testing_support {

/// A Matroska file without colour tags: raw I420 frames of 64x48 at these times, and sound by packets of 20 ms.
std::string MatroskaClip(const std::vector<std::int64_t>& milliseconds, const std::vector<std::string>& frames,
                         int soundPackets, const std::string& soundCodec = "A_PCM/INT/LIT");

struct ClipFacts {
  vidproc::tool::FormatPtr file;
  const AVStream* video = nullptr;
  std::vector<std::int64_t> milliseconds;  ///< of the frames as they are shown
  std::string sound;                       ///< bytes of all its packets
};

/// What the container says, without decoding. Throws std::runtime_error.
ClipFacts Examine(const std::string& path);

}  // namespace testing_support
