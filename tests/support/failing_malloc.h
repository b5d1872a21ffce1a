// Makes one call of malloc fail, or adds up what is asked for: for the few buffers that the library takes with malloc.
// The linker sends the calls of the test program and of the library in it here (--wrap=malloc).
#pragma once

#include <cstddef>

namespace testing_support {

/// While it lives, the malloc call numbered `number` (from 0) gives null. One at a time, one thread.
class FailingMalloc {
 public:
  explicit FailingMalloc(int number);
  ~FailingMalloc();
  FailingMalloc(const FailingMalloc&) = delete;
  FailingMalloc& operator=(const FailingMalloc&) = delete;
};

/// Counts the bytes that are asked for from its construction on.
class MallocCount {
 public:
  MallocCount();
  std::size_t Bytes() const;

 private:
  std::size_t before;
};

}  // namespace testing_support
