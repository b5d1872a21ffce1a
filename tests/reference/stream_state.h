// What one stream of frames carries from frame to frame. Buffers grow with zeros, never shrink and keep what nothing
// overwrites, like working memory that was allocated once, zero-filled and large enough.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace reference {

struct StreamState {
  bool firstFrame = true;
  std::vector<std::uint8_t> history;           // scalers: byte column j of row r at j * outHeight + r; else packed rows
  std::vector<std::uint8_t> previousInput;     // motion gate: packed rows of the last source frame
  std::vector<std::int16_t> previousVertical;  // motion gate: last vertical result, column by column
  std::vector<std::uint8_t> staging;           // temporal filter: its packed result where destination rows are padded
};

template <typename Value>
Value* GrowTo(std::vector<Value>& buffer, std::size_t count) {
  if (buffer.size() < count) buffer.resize(count);
  return buffer.data();
}

}  // namespace reference
