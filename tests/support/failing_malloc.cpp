// The wrapped malloc of the test program.
#include "support/failing_malloc.h"

#include <cstddef>

namespace {

constexpr int kNone = -1;
int callsUntilFailure = kNone;
std::size_t requestedBytes = 0;

}  // namespace

extern "C" {
// NOLINTBEGIN(bugprone-reserved-identifier,readability-identifier-naming): the linker's names.
void* __real_malloc(std::size_t bytes);
void* __wrap_malloc(std::size_t bytes);
void* __wrap_malloc(std::size_t bytes) {
  requestedBytes += bytes;
  if (callsUntilFailure != kNone && callsUntilFailure-- == 0) return nullptr;
  return __real_malloc(bytes);
}
// NOLINTEND(bugprone-reserved-identifier,readability-identifier-naming)
}

namespace testing_support {

FailingMalloc::FailingMalloc(int number) { callsUntilFailure = number; }
FailingMalloc::~FailingMalloc() { callsUntilFailure = kNone; }

MallocCount::MallocCount() : before(requestedBytes) {}
std::size_t MallocCount::Bytes() const { return requestedBytes - before; }

}  // namespace testing_support
