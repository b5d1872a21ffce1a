// Ownership of one processor made by an exported set-up function.
#pragma once

#include "errors.h"
#include "options.h"
#include "picture.h"
#include "vidproc/video_processor.h"

namespace vidproc::tool {

class ProcessorHandle {
 public:
  using Cleanup = void (*)(void**);
  explicit ProcessorHandle(Cleanup cleanup) : cleanup(cleanup) {}
  ~ProcessorHandle() { cleanup(&handle); }
  ProcessorHandle(const ProcessorHandle&) = delete;
  ProcessorHandle& operator=(const ProcessorHandle&) = delete;

  void** Address() { return &handle; }
  void* Get() const { return handle; }
  VideoProcessor* operator->() const { return static_cast<VideoProcessor*>(handle); }

 private:
  void* handle = nullptr;
  Cleanup cleanup;
};

/// A pre- or post-processor for packed frames of these sizes.
using SetUpFunction = int (*)(void**, unsigned int, unsigned int, unsigned int, unsigned int, unsigned int,
                              unsigned int, unsigned int, unsigned int, unsigned int);

inline void SetUp(SetUpFunction function, ProcessorHandle& handle, Size from, Size to, const ScalerOptions& options) {
  const auto number = [](auto value) { return static_cast<unsigned int>(value); };
  const int made = function(handle.Address(), number(from.width), number(from.height), number(2 * from.width),
                            number(to.width), number(to.height), number(2 * to.width), number(options.enhance),
                            number(options.dither), number(options.soften));
  if (made == 0 || handle.Get() == nullptr) {
    throw ToolError(kFailure, "the library refused to scale from " + ToString(from) + " to " + ToString(to));
  }
}

/// 16 and 8 taps, with the enhancement that the switch of an execute call would drop.
inline void UseLongTaps(ProcessorHandle& handle, std::int64_t enhance) {
  handle->SetTaps(1);
  handle->SetEnhanceFilter(EnhanceLaplacian4, static_cast<unsigned int>(enhance), 7, 128, 0);
}

}  // namespace vidproc::tool
