// Noise for whole frames and blocks of memory: a number costs a multiplication.
#pragma once

#include <cstdint>

namespace testing_support {

/// A linear congruential generator, the same numbers everywhere. Its high bits are the random ones.
class FastNoise {
 public:
  explicit FastNoise(std::uint32_t seed) : state(seed) {}
  std::uint32_t Bits() { return state = state * 1664525 + 1013904223; }
  std::uint8_t Byte() { return static_cast<std::uint8_t>(Bits() >> 24); }

 private:
  std::uint32_t state;
};

}  // namespace testing_support
