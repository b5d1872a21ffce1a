// Pipes that are read; see input_pipe.h.
#include "input_pipe.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstring>

#include "errors.h"

namespace vidproc::tool {

bool InputPipe::IsNeededFor(const std::string& path) {
  struct stat status {};
  return path == "-" || (stat(path.c_str(), &status) == 0 && S_ISFIFO(status.st_mode));
}

InputPipe::InputPipe(const std::string& path)
    : descriptor(path == "-" ? STDIN_FILENO : open(path.c_str(), O_RDONLY | O_CLOEXEC)) {
  if (descriptor < 0) throw CannotRead(path, std::strerror(errno));
  if (isatty(descriptor) != 0) throw CannotRead("standard input", "it is a terminal; pipe or redirect a clip into it");
  constexpr int kBytes = 1 << 16;
  auto* buffer = static_cast<unsigned char*>(OrBadAlloc(av_malloc(kBytes)));
  io.reset(OrBadAlloc(avio_alloc_context(buffer, kBytes, 0, this, Read, nullptr, nullptr)));
}

InputPipe::~InputPipe() {
  if (descriptor != STDIN_FILENO) close(descriptor);
}

int InputPipe::Read(void* opaque, std::uint8_t* data, int size) {
  constexpr int kMilliseconds = 100;
  auto* const self = static_cast<InputPipe*>(opaque);
  while (!self->isGivenUp) {
    pollfd waiting = {self->descriptor, POLLIN, 0};
    if (poll(&waiting, 1, kMilliseconds) <= 0) continue;
    const ssize_t got = read(self->descriptor, data, static_cast<std::size_t>(size));
    if (got > 0) return static_cast<int>(got);
    if (got == 0) return AVERROR_EOF;
    if (errno != EINTR && errno != EAGAIN) return AVERROR(errno);
  }
  return AVERROR_EXIT;
}

}  // namespace vidproc::tool
