// SPDX-License-Identifier: GPL-2.0-or-later
// The program's own functions stand before those of the C library for all that is loaded.
#include "allocation_count.h"

#include <cstddef>
#include <cstdlib>

// NOLINTBEGIN(*-reserved-identifier,*-identifier-naming,*-parameter-name): the C library chose the names.
extern "C" {
void* __libc_malloc(std::size_t bytes);
void* __libc_calloc(std::size_t count, std::size_t bytes);
void* __libc_memalign(std::size_t boundary, std::size_t bytes);
}

namespace {
thread_local long takenBlocks = 0;
}

#pragma GCC visibility push(default)
extern "C" void* malloc(std::size_t bytes) {
  ++takenBlocks;
  return __libc_malloc(bytes);
}
extern "C" void* calloc(std::size_t count, std::size_t bytes) {
  ++takenBlocks;
  return __libc_calloc(count, bytes);
}
extern "C" void* aligned_alloc(std::size_t boundary, std::size_t bytes) {
  ++takenBlocks;
  return __libc_memalign(boundary, bytes);
}
#pragma GCC visibility pop
// NOLINTEND(*-reserved-identifier,*-identifier-naming,*-parameter-name)

namespace vidproc_obs_tests {

long TakenBlocks() { return takenBlocks; }

}  // namespace vidproc_obs_tests
