// A progress line with rate and time left on standard error, only when that is a terminal.
#pragma once

#include <chrono>
#include <cstdint>

namespace vidproc::tool {

class Progress {
 public:
  /// `total` 0: not known.
  explicit Progress(std::int64_t total);
  ~Progress();
  void FrameDone();
  std::int64_t Frames() const { return frames; }
  double Seconds() const;
  bool Shown() const { return shown; }
  /// Removes the line, before other text.
  void Clear();

 private:
  using Clock = std::chrono::steady_clock;
  std::int64_t total;
  std::int64_t frames = 0;
  bool shown;             ///< standard error is a terminal
  bool onScreen = false;  ///< a progress line stands there now
  Clock::time_point start = Clock::now();
  Clock::time_point lastShown = start;
};

}  // namespace vidproc::tool
