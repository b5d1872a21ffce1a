// Small clips in containers, made and examined by FFmpeg's libraries, as the tool's input and output.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

extern "C" {
#include <libavutil/pixfmt.h>
#include <libavutil/rational.h>
}

namespace testing_support {

struct ClipSettings {
  int width = 64;
  int height = 48;
  AVPixelFormat format = AV_PIX_FMT_YUV420P;
  std::vector<std::int64_t> milliseconds = {0, 40, 80, 120};  ///< time stamps of the frames
  AVRational sampleAspect = {0, 1};
  AVColorRange range = AVCOL_RANGE_UNSPECIFIED;
  AVColorSpace matrix = AVCOL_SPC_UNSPECIFIED;
  AVColorPrimaries primaries = AVCOL_PRI_UNSPECIFIED;
  AVColorTransferCharacteristic transfer = AVCOL_TRC_UNSPECIFIED;
  AVChromaLocation location = AVCHROMA_LOC_UNSPECIFIED;
  int soundPackets = 0;  ///< of PCM, 20 ms each
  int rotation = 0;      ///< degrees, counter-clockwise, by which players are to turn it
};

/// Writes lossless frames into Matroska or, with a rotation, QuickTime, by the ending of the path. Luma is a gradient
/// from left to right that moves from frame to frame.
void MakeClip(const std::string& path, const ClipSettings& settings);

struct ClipFacts {
  int width = 0;
  int height = 0;
  std::string codec;
  AVPixelFormat format = AV_PIX_FMT_NONE;
  AVRational sampleAspect = {0, 1};
  AVColorRange range = AVCOL_RANGE_UNSPECIFIED;
  AVColorSpace matrix = AVCOL_SPC_UNSPECIFIED;
  AVColorPrimaries primaries = AVCOL_PRI_UNSPECIFIED;
  AVColorTransferCharacteristic transfer = AVCOL_TRC_UNSPECIFIED;
  AVChromaLocation location = AVCHROMA_LOC_UNSPECIFIED;
  std::vector<std::int64_t> milliseconds;
  std::string sound;  ///< bytes of all its packets
  int rotation = 0;
  std::vector<std::string> frames;  ///< planes without gaps
};

ClipFacts Examine(const std::string& path);

}  // namespace testing_support
