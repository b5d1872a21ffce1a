// SPDX-License-Identifier: GPL-2.0-or-later
// libobs with a screen, a camera that shows what it is given, and the filter between two that watch it.
#pragma once

#include <obs.h>

#include <cstdint>
#include <string>
#include <vector>
#include <vidproc/vidproc.hpp>

namespace vidproc_obs_tests {

using Bytes = std::vector<std::uint8_t>;

struct Format {
  video_format source;
  vidproc_format frame;  ///< 0 where the library does not have it
};

/// What a camera's frames are like.
struct Shape {
  Format format;
  int width, height;

  vidproc_frame_info Info() const { return {format.frame, width, height, VIDPROC_SITING_LEFT}; }
};

/// Planes one after another, rows as long as in libobs's own frames; the same noise for the same number.
Bytes Noise(const Shape& shape, unsigned number);

/// Starts libobs on the display, its log kept, and loads the module. Throws std::runtime_error.
void StartStudio();
/// Ends it and returns how many of libobs's blocks are left.
long EndStudio();
/// Settings that have been changed are handed over when the next picture begins: returns when that is so.
void WaitForPictures();
/// What the module has logged since the last call.
std::string TakeLog();

/// A camera with the filter, on the program's screen.
class Camera {
 public:
  /// @param settings  of the filter, in JSON
  explicit Camera(const std::string& settings);
  Camera(const Camera&) = delete;
  Camera& operator=(const Camera&) = delete;
  ~Camera();

  /// Changes settings of the filter; returns when they are in use.
  void Set(const std::string& settings);
  /// Shows a frame and returns what the filter made of it.
  Bytes Show(const Shape& shape, unsigned number);
  /// As Show, at a time of its own.
  Bytes ShowAt(std::uint64_t nanoseconds, const Shape& shape, unsigned number);

  obs_source_t* Filter() const { return filter; }

 private:
  obs_source_t *source, *before, *filter, *after;
};

/// Blocks that the filter has taken for the last frame.
long BlocksOfLastFrame();

}  // namespace vidproc_obs_tests
