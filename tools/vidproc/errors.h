// What the tool tells its user: one line and an exit status for a failure, notes for everything that a result lacks.
#pragma once

#include <stdexcept>
#include <string>

namespace vidproc::tool {

enum ExitStatus { kSuccess = 0, kFailure = 1, kUsage = 2 };

class ToolError : public std::runtime_error {
 public:
  ToolError(ExitStatus status, const std::string& message) : std::runtime_error(message), status(status) {}
  const ExitStatus status;
};

inline ToolError CannotRead(const std::string& name, const std::string& reason) {
  return ToolError(kFailure, name + ": cannot read: " + reason);
}

inline ToolError CannotWrite(const std::string& name, const std::string& reason) {
  return ToolError(kFailure, name + ": cannot write: " + reason);
}

inline ToolError BadUsage(const std::string& option, const std::string& reason) {
  return ToolError(kUsage, option + ": " + reason);
}

/// Prints "vidproc: note: TEXT" on standard error. Any thread.
void Note(const std::string& text);
/// From here on notes are not printed.
void SilenceNotes();
/// Prints "vidproc: TEXT" on standard error, without control characters that names of files may hold.
void PrintError(const std::string& text);

}  // namespace vidproc::tool
