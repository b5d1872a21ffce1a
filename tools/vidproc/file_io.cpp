// Byte files and standard streams; see file_io.h.
#include "file_io.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <filesystem>

#include "errors.h"

namespace vidproc::tool {
namespace {

volatile std::sig_atomic_t interrupted = 0;

void OnInterrupt(int) { interrupted = 1; }

bool IsRegularOrAbsent(const std::string& path) {
  struct stat status {};
  return stat(path.c_str(), &status) != 0 || S_ISREG(status.st_mode);
}

/// mkstemp makes files that only their owner can read; a result has the permissions of any new file.
void GiveUsualPermissions(int descriptor) {
  const mode_t mask = umask(0);
  umask(mask);
  fchmod(descriptor, 0666 & ~mask);
}

}  // namespace

std::string OutputName(const std::string& path) { return path == "-" ? "standard output" : path; }

bool IsSameFile(const std::string& input, const std::string& result) {
  struct stat in {
  }, out{};
  if ((input == "-" ? fstat(STDIN_FILENO, &in) : stat(input.c_str(), &in)) != 0) return false;
  if ((result == "-" ? fstat(STDOUT_FILENO, &out) : stat(result.c_str(), &out)) != 0) return false;
  return S_ISREG(in.st_mode) && in.st_dev == out.st_dev && in.st_ino == out.st_ino;
}

InputFile::InputFile(const std::string& path)
    : name(path == "-" ? "standard input" : path), file(path == "-" ? stdin : std::fopen(path.c_str(), "rb")) {
  if (!file) throw CannotRead(name, std::strerror(errno));
  if (isatty(fileno(file.get()))) throw CannotRead(name, "it is a terminal; pipe a Y4M stream into it");
}

std::size_t InputFile::Read(void* data, std::size_t size) {
  const std::size_t got = std::fread(data, 1, size, file.get());
  if (got < size && std::ferror(file.get())) {
    CheckInterrupted();
    throw CannotRead(name, std::strerror(errno));
  }
  return got;
}

bool InputFile::ReadLine(std::string& line, std::size_t limit) {
  line.clear();
  for (char byte = 0; Read(&byte, 1) == 1;) {
    if (byte == '\n') return true;
    if (line.size() == limit)
      throw CannotRead(name, "a header line is longer than " + std::to_string(limit) + " bytes");
    line += byte;
  }
  return !line.empty();
}

std::int64_t InputFile::Size() const {
  struct stat status {};
  return fstat(fileno(file.get()), &status) == 0 && S_ISREG(status.st_mode) ? status.st_size : 0;
}

OutputFile::OutputFile(const std::string& path) : name(OutputName(path)), finalPath(path), workingPath(path) {
  if (path == "-") {
    descriptor = dup(STDOUT_FILENO);
  } else if (IsRegularOrAbsent(path)) {
    std::error_code ignored;  // a link keeps pointing at the new file
    if (std::filesystem::is_symlink(path, ignored)) finalPath = std::filesystem::weakly_canonical(path, ignored);
    workingPath = finalPath + ".XXXXXX";
    descriptor = mkstemp(workingPath.data());
    if (descriptor >= 0) GiveUsualPermissions(descriptor);
  } else {
    descriptor = open(path.c_str(), O_WRONLY | O_CLOEXEC);
  }
  if (descriptor < 0) throw CannotWrite(name, std::strerror(errno));
}

OutputFile::~OutputFile() {
  if (descriptor >= 0) close(descriptor);
  if (workingPath != finalPath) unlink(workingPath.c_str());
}

void OutputFile::Write(const void* data, std::size_t size) {
  const char* next = static_cast<const char*>(data);
  while (size > 0) {
    const ssize_t written = write(descriptor, next, size);
    if (written < 0) {
      CheckInterrupted();
      if (errno == EINTR) continue;
      throw CannotWrite(name, std::strerror(errno));
    }
    next += written;
    size -= static_cast<std::size_t>(written);
  }
}

void OutputFile::Close() {
  if (descriptor < 0) return;
  const int closing = descriptor;
  descriptor = -1;
  if (close(closing) != 0) throw CannotWrite(name, std::strerror(errno));
}

void OutputFile::Commit() {
  Close();
  if (workingPath == finalPath) return;
  if (std::rename(workingPath.c_str(), finalPath.c_str()) != 0) throw CannotWrite(name, std::strerror(errno));
  workingPath = finalPath;
}

void PrintLine(const std::string& line) {
  std::printf("%s\n", line.c_str());
  FlushStandardOutput();
}

void FlushStandardOutput() {
  if (std::fflush(stdout) == 0 && std::ferror(stdout) == 0) return;
  CheckInterrupted();
  throw CannotWrite(OutputName("-"), std::strerror(errno));
}

void CatchInterrupts() {
  struct sigaction action {};
  action.sa_handler = OnInterrupt;
  action.sa_flags = static_cast<int>(SA_RESETHAND);  // a second signal ends the process at once
  sigaction(SIGINT, &action, nullptr);
  sigaction(SIGTERM, &action, nullptr);
}

void CheckInterrupted() {
  if (interrupted) throw ToolError(kFailure, "interrupted; no output was kept");
}

}  // namespace vidproc::tool
