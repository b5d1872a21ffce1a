// Where frames go, by the ending of the output's name: Y4M, raw frames, lossless Matroska, H.264 in MP4, one PNG.
#pragma once

#include <memory>
#include <string>

#include "file_io.h"
#include "picture.h"

namespace vidproc::tool {

class FrameWriter {
 public:
  explicit FrameWriter(const std::string& path) : file(path) {}
  virtual ~FrameWriter() = default;
  virtual void Write(const Picture& picture) = 0;
  /// Writes what is still held back and closes the file; whatever can go wrong has gone wrong by then.
  virtual void Finish() { file.Close(); }
  /// Gives the finished file its name.
  void Commit() { file.Commit(); }

 protected:
  OutputFile file;
};

/// Throws ToolError with status 2 when the ending is unknown or does not go with the layout.
void CheckOutputName(const std::string& path, Layout layout);
/// Throws ToolError with status 2 when the format does not go with the size.
void CheckOutputSize(const std::string& path, Size size);
bool WritesOneFrame(const std::string& path);

/// `info` describes the frames to be written.
std::unique_ptr<FrameWriter> OpenWriter(const std::string& path, const StreamInfo& info, Layout layout);

std::unique_ptr<FrameWriter> OpenEncoder(const std::string& path, const StreamInfo& info, Layout layout);

}  // namespace vidproc::tool
