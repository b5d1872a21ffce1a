// The progress line; see progress.h.
#include "progress.h"

#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <vidproc/vidproc.hpp>

namespace vidproc::tool {

Progress::Progress(std::int64_t total, bool isQuiet) : total(total), shown(!isQuiet && isatty(STDERR_FILENO) != 0) {}

Progress::~Progress() { Clear(); }

double Progress::Seconds() const { return std::chrono::duration<double>(Clock::now() - start).count(); }

void Progress::Clear() {
  if (onScreen) std::fputs("\r\033[K", stderr);
  onScreen = false;
}

void Progress::Summarise(const std::string& size) {
  Clear();
  if (!shown) return;
  std::fprintf(stderr, "%lld frames of %s in %.2f s (%s)\n", static_cast<long long>(frames), size.c_str(), Seconds(),
               vidproc_level());
}

void Progress::FrameDone() {
  ++frames;
  const Clock::time_point now = Clock::now();
  if (!shown || now - lastShown < std::chrono::milliseconds(100)) return;
  lastShown = now;
  onScreen = true;
  const double rate = static_cast<double>(frames) / std::max(Seconds(), 1e-9);
  if (total > 0) {
    const long long left = std::llround(static_cast<double>(std::max<std::int64_t>(0, total - frames)) / rate);
    std::fprintf(stderr, "\r\033[K%lld of %lld frames, %.1f a second, %lld:%02lld left", static_cast<long long>(frames),
                 static_cast<long long>(total), rate, left / 60, left % 60);
  } else {
    std::fprintf(stderr, "\r\033[K%lld frames, %.1f a second", static_cast<long long>(frames), rate);
  }
}

}  // namespace vidproc::tool
