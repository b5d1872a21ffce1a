// The library's three uses as frame-to-frame steps, each driven through the public header.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "options.h"
#include "picture.h"

namespace vidproc::tool {

class Processing {
 public:
  virtual ~Processing() = default;
  /// `output` is resized as needed; `input` is left as it is.
  virtual void Run(const Picture& input, Picture& output) = 0;
  /// What runs for every frame, for statistics.
  const std::string& Kernel() const { return kernel; }
  /// Time that the library took for the last frame.
  std::int64_t Nanoseconds() const { return nanoseconds; }

 protected:
  std::string kernel;
  std::int64_t nanoseconds = 0;
};

/// Throws ToolError; settings that cannot act on these sizes are told on standard error.
std::unique_ptr<Processing> MakeProcessing(const Options& options, Size from, Size to);

}  // namespace vidproc::tool
