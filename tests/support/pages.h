// Pages of memory that trap until they are opened, on systems like Unix and on Windows.
#pragma once

#ifdef _WIN32
#define WIN32_LEAN_AND_MEAN
#include <windows.h>
#else
#include <sys/mman.h>
#include <unistd.h>
#endif

#include <cstddef>

namespace testing_support {

#ifdef _WIN32
inline std::size_t PageBytes() {
  SYSTEM_INFO info;
  GetSystemInfo(&info);
  return info.dwPageSize;
}
/// Null when there is no memory.
inline void* ReservePages(std::size_t bytes) { return VirtualAlloc(nullptr, bytes, MEM_RESERVE, PAGE_NOACCESS); }
inline bool OpenPages(void* first, std::size_t bytes) {
  return VirtualAlloc(first, bytes, MEM_COMMIT, PAGE_READWRITE) != nullptr;
}
inline void ReleasePages(void* reserved, std::size_t /*bytes*/) { VirtualFree(reserved, 0, MEM_RELEASE); }
#else
inline std::size_t PageBytes() { return static_cast<std::size_t>(sysconf(_SC_PAGESIZE)); }
/// Null when there is no memory.
inline void* ReservePages(std::size_t bytes) {
  void* const memory = mmap(nullptr, bytes, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  return memory == MAP_FAILED ? nullptr : memory;
}
inline bool OpenPages(void* first, std::size_t bytes) { return mprotect(first, bytes, PROT_READ | PROT_WRITE) == 0; }
inline void ReleasePages(void* reserved, std::size_t bytes) { munmap(reserved, bytes); }
#endif

}  // namespace testing_support
