// What the sets of one tile share: for them a tile is the vector, and tiles are in order.
#pragma once

namespace vidproc::VIDPROC_TARGET {
namespace {

inline U8 LoadTilesU8(const std::uint8_t* p, std::ptrdiff_t /*stride*/) { return LoadU8(p); }
inline I16 LoadTilesI16(const std::int16_t* p, std::ptrdiff_t /*stride*/) { return LoadI16(p); }
inline void StoreTiles(std::uint8_t* p, std::ptrdiff_t /*stride*/, U8 a) { Store(p, a); }
inline U8 LoadRepeated(const std::uint8_t* p) { return LoadU8(p); }
inline void StoreTileSum(std::int32_t* p, I32 a) { Store(p, a); }
inline U8 JoinInOrder(I16 first, I16 second) { return Join(first, second); }

constexpr int kWindowBytes = 16;
inline U8 LoadTilesAt(const std::uint8_t* row, const std::int32_t* offsets) { return LoadU8(row + offsets[0]); }
inline U8 LoadWindows(const std::uint8_t* row, const std::int32_t* offsets) { return LoadTilesAt(row, offsets); }
inline U8 ShuffleTiles(U8 tiles, U8 index) { return ShuffleWindows(tiles, index); }

}  // namespace
}  // namespace vidproc::VIDPROC_TARGET
