// Where frames come from: any file that libavformat opens or the synthetic scene, behind one class that hands frames
// out upright, in a format that the library takes, and with all their colour tags.
#pragma once

#include <memory>
#include <optional>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "ffmpeg_handles.h"
#include "frame_converter.h"
#include "options.h"
#include "picture.h"

namespace vidproc::tool {

/// One kind of input.
class FrameSource {
 public:
  virtual ~FrameSource() = default;
  /// Fills or replaces the frame; false at the clean end of the stream. Damage throws ToolError.
  virtual bool Next(AVFrame& frame) = 0;
  /// Ends a Next that waits for input. Any thread.
  virtual void GiveUp() {}
  const StreamInfo& Info() const { return info; }
  /// Packets of sound that have come between the frames.
  std::vector<PacketPtr> TakeSound() { return std::exchange(sound, {}); }
  /// Filters of libavfilter that turn the frames upright; empty where they are.
  const std::string& Upright() const { return upright; }

 protected:
  StreamInfo info;
  std::vector<PacketPtr> sound;
  std::string upright;
};

std::unique_ptr<FrameSource> OpenDecoder(const InputOptions& options);
std::unique_ptr<FrameSource> OpenSyntheticScene(Size size, std::uint32_t seed, double noise);

class FrameReader {
 public:
  /// Opens the input and reads its first frame. What frames lose on the way is noted. Throws ToolError.
  /// @param accepted  formats that need no conversion; others become one of these
  FrameReader(const InputOptions& options, std::span<const AVPixelFormat> accepted);
  /// As the first frame and its container have it.
  const StreamInfo& Info() const { return info; }
  /// The next frame with rising time stamps, the first one's being 0; null at the end.
  FramePtr Read();
  /// Packets of sound that belong before the next frame, on the same clock.
  std::vector<PacketPtr> TakeSound();
  void GiveUp() { source->GiveUp(); }

 private:
  FramePtr Decode();
  void Describe(const AVFrame& first, std::span<const AVPixelFormat> accepted);
  void AssumeColour(const AVFrame& first);
  void NoteLosses(const AVFrame& first) const;
  void Stamp(AVFrame& frame);
  void KeepSize(const AVFrame& frame);

  std::unique_ptr<FrameSource> source;
  StreamInfo info;
  std::optional<FrameConverter> converter;
  FramePtr next;
  Size decodedSize;  ///< of the first frame
  bool isRescaled = false;
  bool hasSkipped;
  std::int64_t limit;
  std::int64_t framesRead = 0;
  std::int64_t framesDecoded = 0;
  std::int64_t firstStamp = 0;
  std::int64_t lastStamp = 0;
};

}  // namespace vidproc::tool
