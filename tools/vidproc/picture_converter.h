// Between FFmpeg's frames and the library's. What can be moved byte by byte is (packed 4:2:2 to and from planar, NV12
// to and from planar 4:2:0); the rest goes through libswscale, bicubic and accurately rounded, to limited range.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "ffmpeg_handles.h"
#include "picture.h"

namespace vidproc::tool {

/// Lossless planar copy: yuv422p of a UYVY picture, yuv420p of an NV12 picture; planes follow each other without gaps.
void ToPlanar(const Picture& picture, std::vector<std::uint8_t>& planes);
AVPixelFormat PlanarFormat(Layout layout);
AVPixelFormat PackedFormat(Layout layout);

/// The matrix that turns a stream's YCbCr into RGB: its own, or the usual one for its size.
AVColorSpace MatrixOf(const ColourTags& colour, Size size);

/// Points a frame at packed or planar memory without gaps, which stays the caller's.
void BorrowBytes(AVPixelFormat format, Size size, const std::uint8_t* bytes, AVFrame& frame);
FramePtr WrapFrame(AVPixelFormat format, Size size, const std::uint8_t* bytes);
/// The picture with what its stream says of colour and shape; borrows its bytes.
FramePtr WrapPicture(const Picture& picture, const StreamInfo& info);

/// One libswscale conversion between two formats and sizes; set up at first use and again when the source changes.
class Scaler {
 public:
  /// `to` must have its buffers; ranges and matrices come from the frames' fields.
  void Convert(const AVFrame& from, AVFrame& to);

 private:
  struct Setting {
    Size from;
    Size to;
    AVPixelFormat formatFrom = AV_PIX_FMT_NONE;
    AVPixelFormat formatTo = AV_PIX_FMT_NONE;
    int rangeFrom = 0;  ///< 1 full
    int rangeTo = 0;
    AVColorSpace matrix = AVCOL_SPC_UNSPECIFIED;
    bool operator==(const Setting&) const = default;
  };

  void SetUp(const Setting& wanted, const AVFrame& tagged);

  ScalerPtr context;
  Setting setting;
};

class PictureConverter {
 public:
  explicit PictureConverter(Layout layout) : layout(layout) {}
  void Convert(const AVFrame& frame, Picture& picture);
  /// True once a frame was full range and has been converted.
  bool ConvertedFullRange() const { return convertedFullRange; }

 private:
  Layout layout;
  Scaler scaler;
  bool convertedFullRange = false;
};

}  // namespace vidproc::tool
