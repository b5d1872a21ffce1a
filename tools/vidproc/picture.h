// A frame as the library takes it (packed UYVY or NV12, rows without gaps) and what is known of its stream.
#pragma once

extern "C" {
#include <libavutil/pixfmt.h>
#include <libavutil/rational.h>
}

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace vidproc::tool {

struct Size {
  int width = 0;
  int height = 0;
  bool operator==(const Size&) const = default;
};

inline std::string ToString(Size size) { return std::to_string(size.width) + "x" + std::to_string(size.height); }

enum class Layout { kUyvy, kNv12 };

struct Picture {
  Layout layout = Layout::kUyvy;
  Size size;
  std::int64_t pts = 0;  ///< in the stream's time base
  std::vector<std::uint8_t> bytes;

  void Allocate(Layout newLayout, Size newSize) {
    layout = newLayout;
    size = newSize;
    bytes.resize(layout == Layout::kUyvy ? LumaBytes() * 2 : LumaBytes() + ChromaRows() * Width());
  }
  std::size_t Width() const { return static_cast<std::size_t>(size.width); }
  std::size_t Height() const { return static_cast<std::size_t>(size.height); }
  std::size_t RowBytes() const { return layout == Layout::kUyvy ? Width() * 2 : Width(); }
  std::size_t ChromaRows() const { return (Height() + 1) / 2; }
  std::size_t LumaBytes() const { return Width() * Height(); }
  std::uint8_t* Chroma() { return bytes.data() + LumaBytes(); }  ///< NV12 only
  const std::uint8_t* Chroma() const { return bytes.data() + LumaBytes(); }
};

struct ColourTags {
  AVColorPrimaries primaries = AVCOL_PRI_UNSPECIFIED;
  AVColorTransferCharacteristic transfer = AVCOL_TRC_UNSPECIFIED;
  AVColorSpace matrix = AVCOL_SPC_UNSPECIFIED;
  AVChromaLocation chromaLocation = AVCHROMA_LOC_UNSPECIFIED;
};

struct StreamInfo {
  std::string name;  ///< for messages
  Size size;
  AVRational frameRate{30, 1};
  AVRational timeBase{1, 30};
  AVRational sampleAspect{0, 1};
  ColourTags colour;
  std::int64_t frameCount = 0;  ///< 0: not known
};

}  // namespace vidproc::tool
