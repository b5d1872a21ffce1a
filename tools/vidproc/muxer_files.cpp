// A muxer's files; see muxer_files.h.
#include "muxer_files.h"

#include <utility>

#include "errors.h"

namespace vidproc::tool {

void MuxerFiles::ServeTo(AVFormatContext& muxer, const std::string& path) {
  served = &muxer;
  muxer.opaque = this;
  muxer.io_open = OpenForMuxer;
  muxer.io_close2 = CloseForMuxer;
  if ((muxer.oformat->flags & AVFMT_NOFILE) == 0) {
    muxer.pb = Open(path).io.get();
    muxer.flags |= AVFMT_FLAG_CUSTOM_IO;
  }
}

MuxerFiles::OpenFile& MuxerFiles::Open(const std::string& path) {
  constexpr int kBytes = 1 << 16;
  std::unique_ptr<OpenFile>& entry = files[path];
  if (entry) {
    entry->file.Restart();  // a picture that is to hold the last frame
  } else {
    entry = std::make_unique<OpenFile>(path);
  }
  auto* buffer = static_cast<unsigned char*>(OrBadAlloc(av_malloc(kBytes)));
  const bool isSeekable = entry->file.Seek(0, SEEK_CUR) >= 0;
  entry->io.reset(
      OrBadAlloc(avio_alloc_context(buffer, kBytes, 1, &entry->file, nullptr, Write, isSeekable ? Seek : nullptr)));
  return *entry;
}

int MuxerFiles::OpenForMuxer(AVFormatContext* muxer, AVIOContext** io, const char* url, int, AVDictionary**) {
  auto* const self = static_cast<MuxerFiles*>(muxer->opaque);
  try {
    *io = self->Open(url).io.get();
    return 0;
  } catch (const std::exception& error) {
    self->failure = error.what();
    return AVERROR(EIO);
  }
}

int MuxerFiles::CloseIo(const AVIOContext* io) {
  for (const auto& [path, open] : files) {
    if (open->io.get() != io) continue;
    avio_flush(open->io.get());
    const int result = open->io->error;
    if (result < 0 && failure.empty()) failure = CannotWrite(open->file.Name(), FfmpegError(result)).what();
    open->io.reset();
    return result;
  }
  return 0;
}

int MuxerFiles::CloseForMuxer(AVFormatContext* muxer, AVIOContext* io) {
  return static_cast<MuxerFiles*>(muxer->opaque)->CloseIo(io);
}

int MuxerFiles::Write(void* opaque, std::uint8_t* data, int size) {
  const int error = static_cast<OutputFile*>(opaque)->TryWrite(data, static_cast<std::size_t>(size));
  return error == 0 ? size : AVERROR(error);
}

std::int64_t MuxerFiles::Seek(void* opaque, std::int64_t offset, int whence) {
  if (whence == AVSEEK_SIZE) return AVERROR(ENOSYS);
  const off_t place = static_cast<OutputFile*>(opaque)->Seek(offset, whence & ~AVSEEK_FORCE);
  return place >= 0 ? place : AVERROR(errno);
}

void MuxerFiles::Check() const {
  if (!failure.empty()) throw ToolError(kFailure, failure);
  if (served != nullptr && served->pb != nullptr && served->pb->error < 0) {
    throw CannotWrite(files.begin()->second->file.Name(), FfmpegError(served->pb->error));
  }
}

void MuxerFiles::Close() {
  if (served->pb != nullptr) CloseIo(std::exchange(served->pb, nullptr));
  Check();
  for (const auto& [path, open] : files) open->file.Close();
}

void MuxerFiles::Commit() {
  for (const auto& [path, open] : files) open->file.Commit();
}

}  // namespace vidproc::tool
