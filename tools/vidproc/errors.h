// The tool's one exception: a line for the user and the exit status that goes with it.
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

}  // namespace vidproc::tool
