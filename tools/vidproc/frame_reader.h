// Where frames come from: any file that libavformat opens, Y4M, raw frames or the synthetic scene, behind one class
// that hands them out as the library takes them.
#pragma once

#include <memory>

#include "ffmpeg_handles.h"
#include "options.h"
#include "picture.h"
#include "picture_converter.h"

namespace vidproc::tool {

/// One kind of input. Next fills or replaces the frame and returns false at the clean end of the stream; damage throws.
class FrameSource {
 public:
  virtual ~FrameSource() = default;
  virtual bool Next(AVFrame& frame) = 0;
  const StreamInfo& Info() const { return info; }

 protected:
  StreamInfo info;
};

std::unique_ptr<FrameSource> OpenDecoder(const std::string& path);
std::unique_ptr<FrameSource> OpenY4m(const std::string& path);
std::unique_ptr<FrameSource> OpenRaw(const std::string& path, const std::string& format, Size size);
std::unique_ptr<FrameSource> OpenSyntheticScene(Size size, std::uint32_t seed, double noise);

/// Fields that every frame of a source without its own frame objects shares; the bytes are borrowed.
void DescribeFrame(const StreamInfo& info, AVPixelFormat format, const std::uint8_t* bytes, std::int64_t pts,
                   AVFrame& frame);

class FrameReader {
 public:
  FrameReader(const InputOptions& options, Layout layout);
  const StreamInfo& Info() const { return info; }
  /// At the end of the stream the picture keeps the last frame and the result is false.
  bool Read(Picture& picture);

 private:
  std::unique_ptr<FrameSource> source;
  StreamInfo info;
  PictureConverter converter;
  FramePtr frame;
  std::int64_t limit;
  std::int64_t framesRead = 0;
};

}  // namespace vidproc::tool
