// The files of a muxer as files of the tool: temporary until everything is done, also where a muxer writes many.
#pragma once

#include <map>
#include <memory>
#include <string>

#include "ffmpeg_handles.h"
#include "file_io.h"

namespace vidproc::tool {

class MuxerFiles {
 public:
  MuxerFiles() = default;
  ~MuxerFiles() = default;
  MuxerFiles(const MuxerFiles&) = delete;
  MuxerFiles& operator=(const MuxerFiles&) = delete;

  /// Makes the muxer open its files here, which have to outlive it. Throws ToolError; the muxer gets the first file at
  /// once where it wants one.
  void ServeTo(AVFormatContext& muxer, const std::string& path);
  /// Throws ToolError where a file could not be written.
  void Check() const;
  /// Hands all bytes over and closes the muxer's own file.
  void Close();
  void Commit();

 private:
  struct OpenFile {
    OutputFile file;
    IoPtr io;
    explicit OpenFile(const std::string& path) : file(path) {}
  };

  OpenFile& Open(const std::string& path);
  int CloseIo(const AVIOContext* io);
  static int OpenForMuxer(AVFormatContext* muxer, AVIOContext** io, const char* url, int flags, AVDictionary** options);
  static int CloseForMuxer(AVFormatContext* muxer, AVIOContext* io);
  static int Write(void* opaque, std::uint8_t* data, int size);
  static std::int64_t Seek(void* opaque, std::int64_t offset, int whence);

  std::map<std::string, std::unique_ptr<OpenFile>> files;  ///< by path
  AVFormatContext* served = nullptr;
  std::string failure;
};

}  // namespace vidproc::tool
