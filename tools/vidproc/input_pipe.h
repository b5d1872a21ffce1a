// Standard input and named pipes for FFmpeg's demuxers. Unlike FFmpeg's own reading it can be given up while the other
// side is silent.
#pragma once

#include <atomic>

#include "ffmpeg_handles.h"

namespace vidproc::tool {

class InputPipe {
 public:
  /// @param path  "-" for standard input. Throws ToolError.
  explicit InputPipe(const std::string& path);
  ~InputPipe();
  InputPipe(const InputPipe&) = delete;
  InputPipe& operator=(const InputPipe&) = delete;

  /// For AVFormatContext::pb.
  AVIOContext* Io() const { return io.get(); }
  /// Ends a read that waits, and all that follow, with AVERROR_EXIT. Any thread.
  void GiveUp() { isGivenUp = true; }

  static bool IsNeededFor(const std::string& path);

 private:
  static int Read(void* opaque, std::uint8_t* data, int size);

  int descriptor;
  std::atomic<bool> isGivenUp = false;
  IoPtr io;
};

}  // namespace vidproc::tool
