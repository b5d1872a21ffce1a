// Work in eight threads at once; scripts/threads runs the tests named after it under ThreadSanitizer.
#pragma once

#include <cstddef>
#include <thread>
#include <vector>

namespace testing_support {

/// Each thread calls `work` once with each of 0..count - 1, and begins elsewhere.
template <typename Work>
void RunInEightThreads(std::size_t count, const Work& work) {
  std::vector<std::thread> threads;
  for (std::size_t t = 0; t < 8; ++t) {
    threads.emplace_back([&work, count, t] {
      for (std::size_t i = 0; i < count; ++i) work((i + t * count / 8) % count);
    });
  }
  for (std::thread& thread : threads) thread.join();
}

}  // namespace testing_support
