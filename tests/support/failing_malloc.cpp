// The wrapped malloc of the test program.
#include "support/failing_malloc.h"

#include <cstddef>

namespace {

constexpr int kNone = -1;
int callsUntilFailure = kNone;

}  // namespace

extern "C" {
// NOLINTBEGIN(bugprone-reserved-identifier,readability-identifier-naming): the linker's names.
void* __real_malloc(std::size_t bytes);
void* __wrap_malloc(std::size_t bytes);
void* __wrap_malloc(std::size_t bytes) {
  if (callsUntilFailure != kNone && callsUntilFailure-- == 0) return nullptr;
  return __real_malloc(bytes);
}
// NOLINTEND(bugprone-reserved-identifier,readability-identifier-naming)
}

namespace testing_support {

FailingMalloc::FailingMalloc(int number) { callsUntilFailure = number; }
FailingMalloc::~FailingMalloc() { callsUntilFailure = kNone; }

}  // namespace testing_support
