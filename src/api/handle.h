// What the functions of handles of every kind begin with. Any of the pointers may be null.
#pragma once

#include <new>

#include "api/error_text.h"
#include "vidproc/vidproc.h"

namespace vidproc::api {

template <typename Handle>
vidproc_status CreateHandle(Handle** handle) noexcept {
  if (handle == nullptr) return VIDPROC_ERROR_INVALID_ARGUMENT;
  *handle = new (std::nothrow) Handle;
  return *handle == nullptr ? VIDPROC_ERROR_OUT_OF_MEMORY : VIDPROC_OK;
}

template <typename Handle, typename Call>
vidproc_status CallHandle(Handle* handle, const Call& call) noexcept {
  if (handle == nullptr) return VIDPROC_ERROR_INVALID_ARGUMENT;
  handle->error.Clear();
  return call(*handle);
}

inline vidproc_status RefuseUnconfigured(ErrorText& error) noexcept {
  return error.Set(VIDPROC_ERROR_NOT_CONFIGURED, "the handle is not configured, allowed after _configure");
}

template <typename Handle>
const char* LastError(const Handle* handle, const char* textOfNull) noexcept {
  return handle == nullptr ? textOfNull : handle->error.Get();
}

}  // namespace vidproc::api
