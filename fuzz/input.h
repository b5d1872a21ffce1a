// What fuzzers draw their values from: the bytes of an input, and zeros once these are used up.
#pragma once

#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>

namespace fuzzing {

// Calls that draw several arguments draw them into braces or names first: compilers pass arguments in different orders,
// and an input has to mean the same to all.
class Input {
 public:
  Input(const std::uint8_t* bytes, std::size_t count) : next(bytes), end(bytes + count) {}

  bool IsEmpty() const { return next == end; }
  std::uint8_t Byte() { return IsEmpty() ? std::uint8_t{0} : *next++; }
  std::uint32_t Word() {
    std::uint32_t word = 0;
    for (int i = 0; i < 4; ++i) word = word << 8 | Byte();
    return word;
  }
  /// low..high, both included; at most 65536 values.
  int Between(int low, int high) {
    const auto count = static_cast<std::uint32_t>(high - low + 1);
    std::uint32_t drawn = Byte();
    if (count > 256) drawn = drawn << 8 | Byte();
    return low + static_cast<int>(drawn % count);
  }
  bool OneIn(int n) { return Between(1, n) == n; }
  template <typename Value, std::size_t kCount>
  const Value& Pick(const Value (&choices)[kCount]) {
    return choices[Byte() % kCount];
  }
  /// Any value, more often a small one or one at the border of a type.
  std::uint32_t Any() {
    static constexpr std::uint32_t kBorders[] = {
        0,     1,     2,        15,       16,         127,        128,        255,        256,        32767,     32768,
        65535, 65536, 1u << 29, 1u << 30, 0x7FFFFFFE, 0x7FFFFFFF, 0x80000000, 0x80000001, 0xFFFFFFFE, 0xFFFFFFFF};
    switch (Between(0, 3)) {
      case 0:
        return Byte();
      case 1:
        return Pick(kBorders);
      case 2: {
        const std::uint32_t border = Pick(kBorders);
        return border + static_cast<std::uint32_t>(Between(-16, 16));
      }
      default:
        return Word();
    }
  }

 private:
  const std::uint8_t* next;
  const std::uint8_t* end;
};

/// What has to hold; the fuzzer stops at the exception.
inline void Require(bool holds, const std::string& what) {
  if (!holds) throw std::logic_error(what);
}

}  // namespace fuzzing
