// What the benchmarks feed: the synthetic camera scene. Packed 4:2:2 (2vuy), NV12, or planes for peers that take no
// others.
#pragma once

#include <cstddef>
#include <cstdint>
#include <new>
#include <vector>

namespace bench {

struct Size {
  int width;
  int height;
};

enum class Format { kPacked422, kNv12, kI420 };

/// Frame memory, aligned as the pickiest peer asks.
template <typename Value>
struct AlignedAllocator {
  using value_type = Value;
  static constexpr std::align_val_t kAlignment{64};
  AlignedAllocator() = default;
  template <typename Other>
  AlignedAllocator(const AlignedAllocator<Other>&) {}
  Value* allocate(std::size_t count) { return static_cast<Value*>(::operator new(count * sizeof(Value), kAlignment)); }
  void deallocate(Value* memory, std::size_t) { ::operator delete(memory, kAlignment); }
  bool operator==(const AlignedAllocator&) const = default;
};
using Bytes = std::vector<std::uint8_t, AlignedAllocator<std::uint8_t>>;

std::size_t FrameBytes(Format format, Size size);

/// Frame `index` of the scene; the same object lives on for every later call.
const Bytes& Frame(Format format, Size size, int index);

/// A row of packed 4:2:2 to and from planes.
void UnpackRow(const std::uint8_t* packed, int width, std::uint8_t* luma, std::uint8_t* cb, std::uint8_t* cr);
void PackRow(const std::uint8_t* luma, const std::uint8_t* cb, const std::uint8_t* cr, int width, std::uint8_t* packed);
/// A row of NV12 chroma to and from planes.
void SplitRow(const std::uint8_t* pairs, int count, std::uint8_t* cb, std::uint8_t* cr);
void MergeRow(const std::uint8_t* cb, const std::uint8_t* cr, int count, std::uint8_t* pairs);

}  // namespace bench
