// Files that the tool writes, and lines on standard output. A file is written under a temporary name beside its own
// and takes its own name only when everything is done, so that a failed run leaves nothing that looks like a result.
#pragma once

#include <sys/types.h>

#include <cstddef>
#include <cstdint>
#include <string>

namespace vidproc::tool {

/// How messages call a path: "-" is standard output.
std::string OutputName(const std::string& path);

/// Files that are read and that no result may replace, whatever names and links lead to them.
class InputFiles {
 public:
  /// "-" is standard input.
  static void Add(const std::string& path);
  /// Whether a result's path leads to one of them; "-" is standard output.
  static bool Contain(const std::string& path);
};

class OutputFile {
 public:
  /// "-" writes standard output. Devices and pipes are written directly, symbolic links followed. An existing file's
  /// mode and owner are kept. Throws ToolError, also for a file that is read.
  explicit OutputFile(const std::string& path);
  ~OutputFile();
  OutputFile(const OutputFile&) = delete;
  OutputFile& operator=(const OutputFile&) = delete;

  void Write(const std::string& text) { Write(text.data(), text.size()); }
  void Write(const void* data, std::size_t size);
  /// @return 0 or an errno
  int TryWrite(const void* data, std::size_t size);
  /// As lseek.
  off_t Seek(off_t offset, int whence);
  /// Forgets what has been written.
  void Restart();
  /// Closes the file and reports what the system kept back until then.
  void Close();
  /// Closes and gives the file its name.
  void Commit();
  const std::string& Name() const { return name; }

 private:
  bool IsTemporary() const { return !workingPath.empty(); }
  void MakeTemporary();

  std::string name;
  std::string finalPath;
  std::string workingPath;  ///< empty for devices and pipes
  int descriptor = -1;
};

/// Prints a line on standard output and hands it over at once: whoever reads a pipe need not wait for a full buffer,
/// and when nobody reads it any more the run ends. Throws ToolError.
void PrintLine(const std::string& line);
/// Throws ToolError unless standard output has taken everything that was ever printed.
void FlushStandardOutput();

}  // namespace vidproc::tool
