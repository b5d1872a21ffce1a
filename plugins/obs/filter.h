// SPDX-License-Identifier: GPL-2.0-or-later
// One source's frames on their way through the pre-processor.
#pragma once

#include <obs.h>

#include <atomic>
#include <cstdint>
#include <mutex>
#include <vidproc/vidproc.hpp>

namespace vidproc::obs {

/// A stream with its settings. Settings belong to any thread, frames to one at a time.
class Filter {
 public:
  /// Takes effect with the next frame. What the library refuses is logged; the former settings stay in use while format
  /// and size do not change, then frames pass as they are.
  void Use(const PreOptions& options);

  /// Processes a frame in place. Memory is taken only where format, size or settings have changed. Frames that are not
  /// the library's are left as they are.
  void Process(const obs_source_frame& frame);

 private:
  void Follow(const FrameInfo& info);
  bool Configure(const FrameInfo& info);

  std::mutex mutex;  ///< of settings
  PreOptions settings;
  std::atomic<bool> hasNewSettings = true;

  Pre pre;
  FrameInfo configured = {};
  bool hasWork = false;  ///< frames of `configured` are accepted and come out changed
  std::uint64_t lastTimestamp = 0;
};

}  // namespace vidproc::obs
