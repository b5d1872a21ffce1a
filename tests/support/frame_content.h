// Pictures for tests: what a frame is filled with, drawn from one seeded generator.
#pragma once

#include <cstddef>
#include <cstdint>
#include <random>
#include <span>
#include <vector>

namespace testing_support {

/// The same numbers with every standard library.
class Random {
 public:
  explicit Random(std::uint32_t seed) : engine(seed) {}
  std::uint32_t Bits() { return static_cast<std::uint32_t>(engine()); }
  /// low..high, both included.
  int Between(int low, int high) { return low + static_cast<int>(Bits() % static_cast<std::uint32_t>(high - low + 1)); }
  bool OneIn(int n) { return Between(1, n) == 1; }
  std::uint8_t Byte() { return static_cast<std::uint8_t>(Bits()); }
  void Fill(std::span<std::uint8_t> bytes) {
    for (std::uint8_t& byte : bytes) byte = Byte();
  }
  template <typename Value, std::size_t kCount>
  Value Pick(const Value (&choices)[kCount]) {
    return choices[Bits() % kCount];
  }

 private:
  std::mt19937 engine;
};

/// A picture whose every byte tells where it lies.
inline std::vector<std::uint8_t> NumberedBytes(std::size_t count) {
  std::vector<std::uint8_t> bytes(count);
  for (std::size_t i = 0; i < count; ++i) bytes[i] = static_cast<std::uint8_t>(i * 7 + i / 32);
  return bytes;
}

enum class Content { kNoise, kExtreme, kSmooth, kSteps, kDrift, kStill };

/// Fills packed rows. `picture` holds the frame before on entry; kDrift moves its samples by at most 16 here and there,
/// kStill keeps it.
inline void Paint(Content content, int rowBytes, int rows, Random& random, std::vector<std::uint8_t>& picture) {
  const std::size_t bytes = static_cast<std::size_t>(rowBytes) * static_cast<std::size_t>(rows);
  if (picture.size() != bytes) {
    picture.assign(bytes, 0);
    if (content == Content::kStill || content == Content::kDrift) content = Content::kNoise;
  }
  const int slopeX = random.Between(-3, 3), slopeY = random.Between(-3, 3), level = random.Between(0, 255);
  const int tile = random.Between(3, 24), step = random.Between(1, 255);
  std::uint8_t* sample = picture.data();
  for (int y = 0; y < rows; ++y) {
    for (int x = 0; x < rowBytes; ++x, ++sample) {
      switch (content) {
        case Content::kNoise:
          *sample = random.Byte();
          break;
        case Content::kExtreme:
          *sample = random.OneIn(2) ? 255 : 0;
          break;
        case Content::kSmooth:
          *sample = static_cast<std::uint8_t>(level + (slopeX * x + slopeY * y) / 8 + random.Between(-2, 2));
          break;
        case Content::kSteps:
          *sample = static_cast<std::uint8_t>((x / tile + y / tile) % 2 == 0 ? level : level + step);
          break;
        case Content::kDrift:
          if ((x / tile + y / tile) % 2 == 0) *sample = static_cast<std::uint8_t>(*sample + random.Between(-16, 16));
          break;
        case Content::kStill:
          break;
      }
    }
  }
}

}  // namespace testing_support
