// Memory of frames: heap blocks of exactly the bytes that a frame has, so that a sanitizer sees the first one beyond.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "digest.h"
#include "input.h"
#include "tests/support/frame_content.h"

namespace fuzzing {

/// Frames that would take more are not made.
inline constexpr std::uint64_t kMostFrameBytes = 1 << 17;

class Block {
 public:
  explicit Block(std::size_t count) : bytes(count) {}

  std::uint8_t* Start() { return bytes.data(); }
  std::size_t Count() const { return bytes.size(); }
  void AddTo(Digest& digest) const { digest.Add(bytes.data(), bytes.size()); }

  void Fill(Input& input) {
    using testing_support::Content;
    static constexpr Content kKinds[] = {Content::kNoise, Content::kExtreme, Content::kSmooth, Content::kSteps};
    const Content kind = input.Pick(kKinds);
    testing_support::Random random(input.Byte());
    testing_support::Paint(kind, static_cast<int>(bytes.size()), 1, random, bytes);
  }

 private:
  std::vector<std::uint8_t> bytes;
};

/// Bytes from the first byte of the first row to the last byte of the last one; rows is positive.
inline std::uint64_t ExtentOf(std::uint64_t rowBytes, std::uint64_t rows, std::uint64_t stride) {
  return (rows - 1) * stride + rowBytes;
}

}  // namespace fuzzing
