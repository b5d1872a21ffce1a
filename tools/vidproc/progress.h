// A progress line with rate and time left on standard error, only when that is a terminal.
#pragma once

#include <chrono>
#include <cstdint>
#include <string>

namespace vidproc::tool {

class Progress {
 public:
  /// `total` 0: not known.
  Progress(std::int64_t total, bool isQuiet);
  ~Progress();
  void FrameDone();
  std::int64_t Frames() const { return frames; }
  /// Removes the line, before other text.
  void Clear();
  /// Replaces the line by a last one.
  void Summarise(const std::string& size);

 private:
  double Seconds() const;

  using Clock = std::chrono::steady_clock;
  std::int64_t total;
  std::int64_t frames = 0;
  bool shown;             ///< standard error is a terminal
  bool onScreen = false;  ///< a progress line stands there now
  Clock::time_point start = Clock::now();
  Clock::time_point lastShown = start;
};

}  // namespace vidproc::tool
