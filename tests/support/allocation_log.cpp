// The replaced operator new and the wrapped calloc and free of the test program.
#include "support/allocation_log.h"

#include <algorithm>
#include <cstdlib>
#include <new>

#include "support/failing_malloc.h"

extern "C" {
// NOLINTBEGIN(bugprone-reserved-identifier,readability-identifier-naming): the linker's names.
void* __real_calloc(std::size_t count, std::size_t bytes);
void* __wrap_calloc(std::size_t count, std::size_t bytes);
void __real_free(void* memory);
void __wrap_free(void* memory);
// NOLINTEND(bugprone-reserved-identifier,readability-identifier-naming)
}

namespace testing_support {
namespace {

AllocationLog* active = nullptr;

// The C library of Windows has no aligned_alloc.
#ifdef _WIN32
void* AllocateAligned(std::size_t alignment, std::size_t bytes) { return _aligned_malloc(bytes, alignment); }
void FreeAligned(void* memory) { _aligned_free(memory); }
#else
void* AllocateAligned(std::size_t alignment, std::size_t bytes) { return std::aligned_alloc(alignment, bytes); }
void FreeAligned(void* memory) { std::free(memory); }
#endif

}  // namespace

AllocationLog::AllocationLog(std::initializer_list<std::size_t> failing) {
  for (const std::size_t number : failing) fails.at(number) = true;
  active = this;
}

AllocationLog::~AllocationLog() { active = nullptr; }

void* AllocationLog::Only(std::size_t bytes) const {
  void* found = nullptr;
  for (const Request& request : requests) {
    if (request.memory == nullptr || request.bytes != bytes) continue;
    if (found != nullptr) return nullptr;
    found = request.memory;
  }
  return found;
}

int AllocationLog::Count(std::size_t bytes) const {
  const auto isOfSize = [bytes](const Request& request) { return request.bytes == bytes; };
  const std::size_t logged = std::min(total, kMost);
  return static_cast<int>(std::count_if(requests.data(), requests.data() + logged, isOfSize));
}

int AllocationLog::Held() const {
  const auto isHeld = [](const Request& request) { return request.memory != nullptr; };
  return total > kMost ? -1 : static_cast<int>(std::count_if(requests.begin(), requests.end(), isHeld));
}

void AllocationLog::TakeBack(const void* memory) {
  if (active == nullptr || memory == nullptr) return;
  for (Request& request : active->requests) {
    if (request.memory == memory) request.memory = nullptr;
  }
}

void* AllocationLog::Serve(std::size_t bytes, std::size_t alignment) {
  const std::size_t number = active != nullptr ? active->total++ : kMost;
  void* memory = nullptr;
  const bool refused = number < kMost && active->fails[number];
  if (!refused) {
    // aligned_alloc wants whole multiples of the alignment.
    const std::size_t rounded = (bytes + alignment - 1) / alignment * alignment;
    memory = alignment <= alignof(std::max_align_t) ? std::malloc(std::max<std::size_t>(bytes, 1))
             : FailingMalloc::TakesNext()           ? nullptr
                                                    : FreshMemory::Fill(AllocateAligned(alignment, rounded), rounded);
  }
  if (number < kMost) active->requests[number] = {bytes, memory};
  if (memory == nullptr) throw std::bad_alloc();
  return memory;
}

void* AllocationLog::ServeZeroed(std::size_t count, std::size_t bytes) {
  const std::size_t number = active != nullptr ? active->total++ : kMost;
  const bool refused = (number < kMost && active->fails[number]) || FailingMalloc::TakesNext();
  void* const memory = refused ? nullptr : __real_calloc(count, bytes);
  if (number < kMost) active->requests[number] = {count * bytes, memory};
  return memory;
}

}  // namespace testing_support

void* __wrap_calloc(std::size_t count, std::size_t bytes) {
  return testing_support::AllocationLog::ServeZeroed(count, bytes);
}

void __wrap_free(void* memory) {
  testing_support::AllocationLog::TakeBack(memory);
  __real_free(memory);
}

void* operator new(std::size_t bytes) { return testing_support::AllocationLog::Serve(bytes, 1); }
void* operator new[](std::size_t bytes) { return testing_support::AllocationLog::Serve(bytes, 1); }
void* operator new(std::size_t bytes, const std::nothrow_t&) noexcept {
  try {
    return testing_support::AllocationLog::Serve(bytes, 1);
  } catch (const std::bad_alloc&) {
    return nullptr;
  }
}
void* operator new(std::size_t bytes, std::align_val_t alignment) {
  return testing_support::AllocationLog::Serve(bytes, static_cast<std::size_t>(alignment));
}
void* operator new[](std::size_t bytes, std::align_val_t alignment) {
  return testing_support::AllocationLog::Serve(bytes, static_cast<std::size_t>(alignment));
}
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete[](void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }
void operator delete[](void* memory, std::size_t) noexcept { std::free(memory); }
void operator delete(void* memory, std::align_val_t) noexcept { testing_support::FreeAligned(memory); }
void operator delete[](void* memory, std::align_val_t) noexcept { testing_support::FreeAligned(memory); }
void operator delete(void* memory, std::size_t, std::align_val_t) noexcept { testing_support::FreeAligned(memory); }
void operator delete[](void* memory, std::size_t, std::align_val_t) noexcept { testing_support::FreeAligned(memory); }
