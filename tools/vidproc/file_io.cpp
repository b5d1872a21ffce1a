// Files that the tool writes; see file_io.h.
#include "file_io.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <mutex>
#include <set>
#include <utility>

#include "errors.h"
#include "signals.h"

namespace vidproc::tool {
namespace {

namespace fs = std::filesystem;

std::mutex inputsMutex;
std::set<std::pair<dev_t, ino_t>> inputs;

bool Examine(const std::string& path, int standardStream, struct stat& status) {
  return (path == "-" ? fstat(standardStream, &status) : stat(path.c_str(), &status)) == 0;
}

/// Where a path leads, even if nothing is there yet.
std::string FollowLinks(fs::path path) {
  constexpr int kMaxLinks = 40;
  std::error_code noLink;
  for (int links = 0; links < kMaxLinks && fs::is_symlink(path, noLink); ++links) {
    path = path.parent_path() / fs::read_symlink(path, noLink);
  }
  return path.string();
}

/// Can only be asked for by setting it, so not again beside other threads.
mode_t FileModeMask() {
  static const mode_t kMask = [] {
    const mode_t mask = umask(0);
    umask(mask);
    return mask;
  }();
  return kMask;
}

}  // namespace

std::string OutputName(const std::string& path) { return path == "-" ? "standard output" : path; }

void InputFiles::Add(const std::string& path) {
  struct stat status {};
  if (!Examine(path, STDIN_FILENO, status) || !S_ISREG(status.st_mode)) return;
  const std::lock_guard lock(inputsMutex);
  inputs.emplace(status.st_dev, status.st_ino);
}

bool InputFiles::Contain(const std::string& path) {
  struct stat status {};
  if (!Examine(path, STDOUT_FILENO, status)) return false;
  const std::lock_guard lock(inputsMutex);
  return inputs.contains({status.st_dev, status.st_ino});
}

OutputFile::OutputFile(const std::string& path) : name(OutputName(path)), finalPath(FollowLinks(path)) {
  struct stat status {};
  const bool exists = Examine(path, STDOUT_FILENO, status);
  if (InputFiles::Contain(path)) throw ToolError(kUsage, name + ": is the file that is read; name another output");
  if (path == "-") {
    descriptor = dup(STDOUT_FILENO);
  } else if (exists && S_ISREG(status.st_mode) && (status.st_mode & 0222) == 0) {
    throw CannotWrite(name, "it is write-protected; chmod it or name another output");
  } else if (exists && !S_ISREG(status.st_mode)) {
    descriptor = open(path.c_str(), O_WRONLY | O_CLOEXEC);
  } else {
    MakeTemporary();
    if (exists && descriptor >= 0) {
      [[maybe_unused]] const int ownerIsKept = fchown(descriptor, status.st_uid, status.st_gid);  // by root only
      fchmod(descriptor, status.st_mode & 07777);
    }
  }
  if (descriptor < 0) throw CannotWrite(name, std::strerror(errno));
}

/// mkostemp makes files that only their owner can read; a new result has the permissions of any new file.
void OutputFile::MakeTemporary() {
  const fs::path directory = fs::path(finalPath).parent_path();
  workingPath = (directory / ".vidproc-XXXXXX").string();
  descriptor = MakeUnfinishedFile(workingPath);
  if (descriptor < 0) {
    workingPath.clear();
    return;
  }
  fchmod(descriptor, 0666 & ~FileModeMask());
}

OutputFile::~OutputFile() {
  if (descriptor >= 0) close(descriptor);
  if (IsTemporary()) EndUnfinishedFile(workingPath, "");
}

int OutputFile::TryWrite(const void* data, std::size_t size) {
  const char* next = static_cast<const char*>(data);
  while (size > 0) {
    const ssize_t written = write(descriptor, next, size);
    if (written < 0 && errno == EINTR) continue;
    if (written < 0) return errno;
    next += written;
    size -= static_cast<std::size_t>(written);
  }
  return 0;
}

void OutputFile::Write(const void* data, std::size_t size) {
  if (const int error = TryWrite(data, size); error != 0) throw CannotWrite(name, std::strerror(error));
}

off_t OutputFile::Seek(off_t offset, int whence) { return lseek(descriptor, offset, whence); }

void OutputFile::Restart() {
  if (!IsTemporary()) return;
  if (ftruncate(descriptor, 0) != 0 || Seek(0, SEEK_SET) != 0) throw CannotWrite(name, std::strerror(errno));
}

void OutputFile::Close() {
  const int closing = std::exchange(descriptor, -1);
  if (closing >= 0 && close(closing) != 0) throw CannotWrite(name, std::strerror(errno));
}

void OutputFile::Commit() {
  Close();
  if (!IsTemporary()) return;
  if (InputFiles::Contain(finalPath)) throw CannotWrite(name, "it has been read in the meantime");
  if (const int error = EndUnfinishedFile(workingPath, finalPath); error != 0) {
    throw CannotWrite(name, std::strerror(error));
  }
  workingPath.clear();
}

void PrintLine(const std::string& line) {
  std::printf("%s\n", line.c_str());
  FlushStandardOutput();
}

void FlushStandardOutput() {
  if (std::fflush(stdout) == 0 && std::ferror(stdout) == 0) return;
  throw CannotWrite(OutputName("-"), std::strerror(errno));
}

}  // namespace vidproc::tool
