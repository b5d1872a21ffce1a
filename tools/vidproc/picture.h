// What is known of a stream of frames besides the frames themselves, which are FFmpeg's.
#pragma once

extern "C" {
#include <libavutil/pixfmt.h>
#include <libavutil/rational.h>
}

#include <cstdint>
#include <string>

struct AVFormatContext;

namespace vidproc::tool {

struct Size {
  int width = 0;
  int height = 0;
  bool operator==(const Size&) const = default;
};

inline std::string ToString(Size size) { return std::to_string(size.width) + "x" + std::to_string(size.height); }

struct Rectangle {
  int left = 0;
  int top = 0;
  Size size;
};

struct ColourTags {
  AVColorPrimaries primaries = AVCOL_PRI_UNSPECIFIED;
  AVColorTransferCharacteristic transfer = AVCOL_TRC_UNSPECIFIED;
  AVColorSpace matrix = AVCOL_SPC_UNSPECIFIED;
  AVChromaLocation chromaLocation = AVCHROMA_LOC_UNSPECIFIED;
  AVColorRange range = AVCOL_RANGE_MPEG;
};

struct StreamInfo {
  std::string name;  ///< for messages
  Size size;
  AVRational frameRate{30, 1};
  AVRational timeBase{1, 30};
  AVRational sampleAspect{0, 1};  ///< 0: not known
  ColourTags colour;
  AVPixelFormat format = AV_PIX_FMT_NONE;
  std::int64_t frameCount = 0;                 ///< 0: not known
  const AVFormatContext* container = nullptr;  ///< that the stream is from, with the streams beside it; may be null
};

}  // namespace vidproc::tool
