// Look-ups and shuffles for the sets of one tile that have no instruction for them.
#pragma once

namespace vidproc::VIDPROC_TARGET {
namespace {

constexpr bool kHasByteShuffle = false;

inline U8 LookUpBelow16(U8 table, U8 index) {
  std::uint8_t entry[16];
  std::uint8_t byte[16];
  Store(entry, table);
  Store(byte, index);
  for (std::uint8_t& b : byte) b = b < 16 ? entry[b] : 0;
  return LoadU8(byte);
}
inline U8 ShuffleWindows(U8 windows, U8 index) { return LookUpBelow16(windows, index); }

}  // namespace
}  // namespace vidproc::VIDPROC_TARGET
