// A sum of bytes, by which the results of two runs are compared.
#pragma once

#include <cstddef>
#include <cstdint>

namespace fuzzing {

/// FNV-1a, 64 bits, of everything that calls have produced: sums that need no library.
class Digest {
 public:
  void Add(const std::uint8_t* bytes, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) value = (value ^ bytes[i]) * 0x100000001B3;
  }
  void Add(std::int64_t number) {
    for (int shift = 0; shift < 64; shift += 8) {
      value = (value ^ (static_cast<std::uint64_t>(number) >> shift & 255)) * 0x100000001B3;
    }
  }
  std::uint64_t Value() const { return value; }

 private:
  std::uint64_t value = 0xCBF29CE484222325;
};

}  // namespace fuzzing
