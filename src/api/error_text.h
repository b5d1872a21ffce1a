// What the last call on a handle found wrong, in memory of the handle's own.
#pragma once

#include <cstdarg>
#include <cstdio>

#include "compiler/compiler.h"
#include "vidproc/vidproc.h"

namespace vidproc::api {

class ErrorText {
 public:
  void Clear() noexcept { text[0] = '\0'; }
  const char* Get() const noexcept { return text; }

  /// Sets the text as printf would print it, and returns `status`.
  VIDPROC_CHECKED_AS_PRINTF(3, 4) vidproc_status Set(vidproc_status status, const char* format, ...) noexcept {
    va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(text, sizeof(text), format, arguments);
    va_end(arguments);
    return status;
  }

 private:
  char text[200] = "";
};

/// Runs a call that may take memory. Nothing below throws for any other reason than a lack of it.
template <typename Call>
vidproc_status WithoutExceptions(ErrorText& error, const Call& call) noexcept {
  try {
    return call();
  } catch (...) {
    return error.Set(VIDPROC_ERROR_OUT_OF_MEMORY, "out of memory for these frames and settings");
  }
}

}  // namespace vidproc::api
