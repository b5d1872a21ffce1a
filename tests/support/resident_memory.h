// How much memory this process has in use.
#pragma once

#include <fstream>
#include <string>

namespace testing_support {

/// 0 where the system does not tell.
inline long ResidentKilobytes() {
  std::ifstream status("/proc/self/status");
  for (std::string word; status >> word;) {
    long kilobytes = 0;
    if (word == "VmRSS:" && status >> kilobytes) return kilobytes;
  }
  return 0;
}

}  // namespace testing_support
