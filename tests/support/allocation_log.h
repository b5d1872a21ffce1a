// Watches operator new and calloc of the whole test program: what was asked for and given back, and which requests are
// to fail. The linker sends the calls of calloc and free here (--wrap=calloc, --wrap=free).
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
  /// Requests that were granted and have not been given back; -1 where there were too many to know.
  int Held() const;

  /// For operator new, and for calloc and free.
  static void* Serve(std::size_t bytes, std::size_t alignment);
  static void* ServeZeroed(std::size_t count, std::size_t bytes);
  static void TakeBack(const void* memory);

 private:
  static constexpr std::size_t kMost = 1024;

  std::array<bool, kMost> fails = {};
  std::array<Request, kMost> requests = {};
  std::size_t total = 0;
};

}  // namespace testing_support
