// Watches operator new and calloc of the whole test program: what was asked for, and which requests are to fail. The
// linker sends the calls of calloc here (--wrap=calloc).
#pragma once

#include <array>
#include <cstddef>
#include <initializer_list>

namespace testing_support {

/// Logs every request of its lifetime, from 0; those numbered in `failing` throw std::bad_alloc, or
/// give null where it was calloc. One at a time, one thread.
class AllocationLog {
 public:
  struct Request {
    std::size_t bytes;
    void* memory;
  };

  explicit AllocationLog(std::initializer_list<std::size_t> failing = {});
  ~AllocationLog();
  AllocationLog(const AllocationLog&) = delete;
  AllocationLog& operator=(const AllocationLog&) = delete;

  /// Memory of the only request of that size that was granted; null when there is none or there are several.
  void* Only(std::size_t bytes) const;
  /// Requests of that size, refused ones included.
  int Count(std::size_t bytes) const;
  std::size_t Total() const { return total; }

  /// For operator new, and for calloc.
  static void* Serve(std::size_t bytes, std::size_t alignment);
  static void* ServeZeroed(std::size_t count, std::size_t bytes);

 private:
  static constexpr std::size_t kMost = 256;

  std::array<bool, kMost> fails = {};
  std::array<Request, kMost> requests = {};
  std::size_t total = 0;
};

}  // namespace testing_support
