// Makes one request for memory fail, adds up what malloc is asked for, or fills it. The linker sends the calls of the
// test program and of the library in it here (--wrap=malloc); operator new takes its memory the same way.
#pragma once

#include <cstddef>

namespace testing_support {

/// While it lives, the call numbered `number` (from 0) of malloc, calloc or operator new fails. One at a time, one
/// thread.
class FailingMalloc {
 public:
  explicit FailingMalloc(int number);
  ~FailingMalloc();
  FailingMalloc(const FailingMalloc&) = delete;
  FailingMalloc& operator=(const FailingMalloc&) = delete;

  /// Whether there were that many.
  static bool HasFailed();
  /// For operator new and calloc: counts a request, true for the one that is to fail.
  static bool TakesNext();
};

enum class Garbage { kNone, kZeros, kOnes, kRandom };

/// While it lives, fresh memory holds bits of this kind. One at a time.
class FreshMemory {
 public:
  explicit FreshMemory(Garbage kind);
  ~FreshMemory();
  FreshMemory(const FreshMemory&) = delete;
  FreshMemory& operator=(const FreshMemory&) = delete;

  static void* Fill(void* memory, std::size_t bytes);
};

/// Counts the bytes that the program asks for from its construction on.
class MallocCount {
 public:
  MallocCount();
  std::size_t Bytes() const;

 private:
  std::size_t before;
};

}  // namespace testing_support
