// Byte files for the plain formats, and lines on standard output. An output file is written under a temporary name
// beside its own and takes its own name only when everything is done, so that a failed run leaves nothing that looks
// like a result.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>

namespace vidproc::tool {

/// How messages call a path: "-" is standard output.
std::string OutputName(const std::string& path);

/// True where the input's path and a result's lead to one regular file, whatever links lie between; "-" is standard
/// input and standard output.
bool IsSameFile(const std::string& input, const std::string& result);

class InputFile {
 public:
  /// "-" reads standard input. Throws ToolError.
  explicit InputFile(const std::string& path);
  /// Reads up to `size` bytes; fewer only at the end of the file. Throws ToolError on a read error.
  std::size_t Read(void* data, std::size_t size);
  /// Reads up to a line end, which is not kept; false at the end of the file. A line beyond `limit` bytes throws.
  bool ReadLine(std::string& line, std::size_t limit);
  /// 0 when not known (pipes).
  std::int64_t Size() const;
  const std::string& Name() const { return name; }

 private:
  struct Closer {
    void operator()(std::FILE* file) const {
      if (file != stdin) std::fclose(file);
    }
  };
  std::string name;
  std::unique_ptr<std::FILE, Closer> file;
};

class OutputFile {
 public:
  /// "-" writes standard output. Devices and pipes are written directly. Throws ToolError.
  explicit OutputFile(const std::string& path);
  ~OutputFile();
  OutputFile(const OutputFile&) = delete;
  OutputFile& operator=(const OutputFile&) = delete;

  void Write(const void* data, std::size_t size);
  void Write(const std::string& text) { Write(text.data(), text.size()); }
  /// Closes the file and reports what the system kept back until then.
  void Close();
  /// Closes and gives the file its name.
  void Commit();
  /// Where the bytes go until Commit, for libraries that open files themselves.
  const std::string& WorkingPath() const { return workingPath; }
  const std::string& Name() const { return name; }

 private:
  std::string name;
  std::string finalPath;
  std::string workingPath;  ///< equals finalPath for devices and pipes
  int descriptor = -1;
};

/// Prints a line on standard output and hands it over at once: whoever reads a pipe need not wait for a full buffer,
/// and when nobody reads it any more the run ends. Throws ToolError.
void PrintLine(const std::string& line);
/// Throws ToolError unless standard output has taken everything that was ever printed.
void FlushStandardOutput();

/// From here on an interrupt or a termination signal only raises a flag, so that temporary files are removed.
void CatchInterrupts();
/// Throws ToolError when such a signal has come.
void CheckInterrupted();

}  // namespace vidproc::tool
