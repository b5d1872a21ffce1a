// The wrapped malloc of the test program.
#include "support/failing_malloc.h"

#include <atomic>
#include <cstddef>
#include <cstdint>

#include "support/fast_noise.h"

namespace {

constexpr int kNone = -1;
int callsUntilFailure = kNone;
// Not of a thread: where compilers emulate such objects, their first use calls malloc.
std::atomic<std::size_t> requestedBytes = 0;
testing_support::Garbage garbage = testing_support::Garbage::kNone;

}  // namespace

extern "C" {
// NOLINTBEGIN(bugprone-reserved-identifier,readability-identifier-naming): the linker's names.
void* __real_malloc(std::size_t bytes);
void* __wrap_malloc(std::size_t bytes);
void* __wrap_malloc(std::size_t bytes) {
  requestedBytes += bytes;
  if (testing_support::FailingMalloc::TakesNext()) return nullptr;
  return testing_support::FreshMemory::Fill(__real_malloc(bytes), bytes);
}
// NOLINTEND(bugprone-reserved-identifier,readability-identifier-naming)
}

namespace testing_support {

FailingMalloc::FailingMalloc(int number) { callsUntilFailure = number; }
FailingMalloc::~FailingMalloc() { callsUntilFailure = kNone; }
bool FailingMalloc::HasFailed() { return callsUntilFailure == kNone; }
bool FailingMalloc::TakesNext() { return callsUntilFailure != kNone && callsUntilFailure-- == 0; }

FreshMemory::FreshMemory(Garbage kind) { garbage = kind; }
FreshMemory::~FreshMemory() { garbage = Garbage::kNone; }

void* FreshMemory::Fill(void* memory, std::size_t bytes) {
  if (garbage == Garbage::kNone || memory == nullptr) return memory;
  auto* const start = static_cast<std::uint8_t*>(memory);
  FastNoise noise(1);
  for (std::size_t i = 0; i < bytes; ++i) {
    start[i] = garbage == Garbage::kRandom ? noise.Byte() : garbage == Garbage::kOnes ? 255 : 0;
  }
  return memory;
}

MallocCount::MallocCount() : before(requestedBytes) {}
std::size_t MallocCount::Bytes() const { return requestedBytes - before; }

}  // namespace testing_support
