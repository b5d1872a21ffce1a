// Memory of frames: heap blocks of exactly the bytes that a frame has, so that a sanitizer sees the first one beyond.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

#include "digest.h"
#include "input.h"

namespace fuzzing {

/// Frames that would take more are not made.
inline constexpr std::uint64_t kMostFrameBytes = 1 << 17;

class Block {
 public:
  explicit Block(std::size_t count) : bytes(new std::uint8_t[count]()), count(count) {}

  std::uint8_t* Start() { return bytes.get(); }
  std::size_t Count() const { return count; }
  void AddTo(Digest& digest) const { digest.Add(bytes.get(), count); }

  /// One of a few kinds of pictures.
  void Fill(Input& input) {
    const int kind = input.Between(0, 4);
    const std::uint8_t level = input.Byte();
    std::uint32_t state = level * 2654435761u + 1;
    for (std::size_t i = 0; i < count; ++i) {
      state = state * 1664525 + 1013904223;
      const std::uint32_t noise = state >> 16;
      switch (kind) {
        case 0:
          bytes[i] = level;
          break;
        case 1:
          bytes[i] = static_cast<std::uint8_t>(noise);
          break;
        case 2:
          bytes[i] = noise % 2 == 0 ? 0 : 255;
          break;
        case 3:
          bytes[i] = static_cast<std::uint8_t>(level + noise % 5 + i / 64);
          break;
        default:
          bytes[i] = static_cast<std::uint8_t>(i / 24 % 2 * level);
          break;
      }
    }
  }

 private:
  std::unique_ptr<std::uint8_t[]> bytes;
  std::size_t count;
};

/// Bytes from the first byte of the first row to the last byte of the last one; rows is positive.
inline std::uint64_t ExtentOf(std::uint64_t rowBytes, std::uint64_t rows, std::uint64_t stride) {
  return (rows - 1) * stride + rowBytes;
}

}  // namespace fuzzing
