// What is done to every frame.
#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <new>
#include <optional>
#include <string>

#include "errors.h"
#include "frame_converter.h"
#include "frame_shape.h"
#include "library_frame.h"
#include "options.h"

namespace vidproc::tool {

/// Configures a vidproc::Pre or vidproc::Post. Throws ToolError for settings that the library refuses.
template <typename Handle, typename HandleOptions>
void Configure(Handle& handle, const HandleOptions& settings) {
  try {
    handle.Configure(settings);
  } catch (const vidproc::Error& error) {
    if (error.Status() == VIDPROC_ERROR_OUT_OF_MEMORY) throw std::bad_alloc();
    throw ToolError(kUsage, std::string("these settings are refused: ") + error.what());
  }
}

class Processing {
 public:
  virtual ~Processing() = default;
  /// A new frame with the input's time stamp.
  FramePtr Run(const AVFrame& input);
  /// Time that the library took for the last frame.
  std::int64_t Nanoseconds() const { return nanoseconds; }
  /// The input's noise in hundredths of a luma level, where the settings make the library estimate it.
  virtual std::optional<int> Noise() { return std::nullopt; }

 protected:
  Processing(const FrameShape& shape, const ColourTags& colour, FramePool pool);
  virtual void Process(const AVFrame& input, AVFrame& output) = 0;
  template <typename Work>
  void Time(Work work) {
    const auto start = std::chrono::steady_clock::now();
    work();
    nanoseconds = std::chrono::nanoseconds(std::chrono::steady_clock::now() - start).count();
  }

  const FrameShape shape;

 private:
  ColourTags colour;
  FramePool pool;
  std::int64_t nanoseconds = 0;
};

/// pre and post. Throws ToolError for settings that the library refuses.
std::unique_ptr<Processing> MakeProcessing(const Options& options, const StreamInfo& input, const FrameShape& shape,
                                           AVPixelFormat outputFormat);

/// The processor object's own routes. Frames are of the input's format, 2vuy (UYVY) or NV12, and of even width.
std::unique_ptr<Processing> MakeObjectProcessing(const Options& options, const StreamInfo& input,
                                                 const FrameShape& shape);

}  // namespace vidproc::tool
