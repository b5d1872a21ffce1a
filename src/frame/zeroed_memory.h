// Zero-filled memory that costs nothing until it is used.
#pragma once

#include <cstdint>
#include <cstdlib>
#include <limits>
#include <memory>
#include <new>

namespace vidproc {

struct FreeMemory {
  void operator()(void* memory) const noexcept { std::free(memory); }
};

template <class Value>
using ZeroedMemory = std::unique_ptr<Value[], FreeMemory>;

/// Large pieces are fresh pages of the system, which gives them when they are first touched.
/// @throws std::bad_alloc
template <class Value>
ZeroedMemory<Value> TakeZeroed(std::uint64_t bytes) {
  if (bytes > std::numeric_limits<std::size_t>::max()) throw std::bad_alloc();
  ZeroedMemory<Value> memory(static_cast<Value*>(std::calloc(static_cast<std::size_t>(bytes), 1)));
  if (memory == nullptr) throw std::bad_alloc();
  return memory;
}

}  // namespace vidproc
