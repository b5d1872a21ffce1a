// Makes one call of malloc fail, for the few buffers that the library takes with malloc. The linker sends the calls of
// the test program and of the library in it here (--wrap=malloc).
#pragma once

namespace testing_support {

/// While it lives, the malloc call numbered `number` (from 0) gives null. One at a time, one thread.
class FailingMalloc {
 public:
  explicit FailingMalloc(int number);
  ~FailingMalloc();
  FailingMalloc(const FailingMalloc&) = delete;
  FailingMalloc& operator=(const FailingMalloc&) = delete;
};

}  // namespace testing_support
