// Plain C++ on arrays of the size of one 128-bit vector: any processor, and the meaning of each operation in words.
#pragma once

#include <cstring>

#define VIDPROC_HAS_BYTE_OPS 0

namespace vidproc::VIDPROC_TARGET {
namespace {

struct Raw {
  std::uint8_t byte[16];
};

}  // namespace
}  // namespace vidproc::VIDPROC_TARGET

#include "simd/vector_types.h"

namespace vidproc::VIDPROC_TARGET {
namespace {

inline int Lane(I16 a, int i) {
  return static_cast<std::int16_t>(static_cast<std::uint16_t>(a.raw.byte[2 * i] | a.raw.byte[2 * i + 1] << 8));
}
inline void SetLane(I16& a, int i, int value) {
  a.raw.byte[2 * i] = static_cast<std::uint8_t>(value);
  a.raw.byte[2 * i + 1] = static_cast<std::uint8_t>(static_cast<unsigned>(value) >> 8);
}
inline int ClampTo(int value, int low, int high) { return value < low ? low : value > high ? high : value; }
inline int Saturated16(int value) { return ClampTo(value, -32768, 32767); }
inline int SaturatedByte(int value) { return ClampTo(value, 0, 255); }
inline int SignedByte(int value) { return static_cast<std::int8_t>(value); }

inline std::uint32_t Lane(I32 a, int i) {
  const std::uint8_t* bytes = a.raw.byte + 4 * i;
  return bytes[0] | std::uint32_t{bytes[1]} << 8 | std::uint32_t{bytes[2]} << 16 | std::uint32_t{bytes[3]} << 24;
}
inline void SetLane(I32& a, int i, std::uint32_t value) {
  for (int k = 0; k < 4; ++k) a.raw.byte[4 * i + k] = static_cast<std::uint8_t>(value >> (8 * k));
}

/// One value of every lane, or byte, from those of a and b.
template <class Operation>
inline I16 EachLane(I16 a, I16 b, Operation operation) {
  I16 result;
  for (int i = 0; i < kLanes; ++i) SetLane(result, i, operation(Lane(a, i), Lane(b, i)));
  return result;
}
template <class Operation>
inline U8 EachByte(U8 a, U8 b, Operation operation) {
  U8 result;
  for (int i = 0; i < kVectorBytes; ++i) {
    result.raw.byte[i] = static_cast<std::uint8_t>(operation(int{a.raw.byte[i]}, int{b.raw.byte[i]}));
  }
  return result;
}
template <int kSize, int kOffset>
inline Raw Zip(Raw a, Raw b) {
  Raw result;
  for (int i = 0; i < 8 / kSize; ++i) {
    std::memcpy(result.byte + 2 * i * kSize, a.byte + kOffset + i * kSize, kSize);
    std::memcpy(result.byte + (2 * i + 1) * kSize, b.byte + kOffset + i * kSize, kSize);
  }
  return result;
}

inline Raw LoadRaw(const void* p) {
  Raw result;
  std::memcpy(result.byte, p, sizeof result.byte);
  return result;
}
inline I16 LoadI16(const void* p) {
  I16 result;
  for (int i = 0; i < kLanes; ++i) {
    std::int16_t value;
    std::memcpy(&value, static_cast<const std::uint8_t*>(p) + 2 * i, 2);
    SetLane(result, i, value);
  }
  return result;
}
inline U8 LoadU8(const void* p) { return {LoadRaw(p)}; }
inline void Store(void* p, I16 a) {
  for (int i = 0; i < kLanes; ++i) {
    const auto value = static_cast<std::int16_t>(Lane(a, i));
    std::memcpy(static_cast<std::uint8_t*>(p) + 2 * i, &value, 2);
  }
}
inline void Store(void* p, U8 a) { std::memcpy(p, a.raw.byte, sizeof a.raw.byte); }
inline void Store(void* p, I32 a) {
  for (int i = 0; i < kLanes / 2; ++i) {
    const std::uint32_t value = Lane(a, i);
    std::memcpy(static_cast<std::uint8_t*>(p) + 4 * i, &value, 4);
  }
}
inline I16 LoadWiden(const void* p) {
  I16 result;
  for (int i = 0; i < kLanes; ++i) SetLane(result, i, static_cast<const std::uint8_t*>(p)[i]);
  return result;
}
inline void StoreNarrow(void* p, I16 a) {
  for (int i = 0; i < kLanes; ++i) {
    static_cast<std::uint8_t*>(p)[i] = static_cast<std::uint8_t>(SaturatedByte(Lane(a, i)));
  }
}
inline U8 LoadTiles(const void* p, std::ptrdiff_t) { return LoadU8(p); }
/// The first half of a vector from `low`, the second from `high`.
inline U8 LoadHalves(const void* low, const void* high) {
  U8 result;
  std::memcpy(result.raw.byte, low, sizeof result.raw.byte / 2);
  std::memcpy(result.raw.byte + sizeof result.raw.byte / 2, high, sizeof result.raw.byte / 2);
  return result;
}
/// The same 16 bytes in every tile.
inline U8 LoadRepeated(const void* p) { return LoadU8(p); }
inline void StoreTiles(void* p, std::ptrdiff_t, U8 a) { Store(p, a); }
/// The sum of the tiles.
inline void StoreTileSum(void* p, I32 a) { Store(p, a); }

inline I16 SplatI16(int value) {
  I16 result;
  for (int i = 0; i < kLanes; ++i) SetLane(result, i, value);
  return result;
}
inline U8 SplatU8(int value) {
  U8 result;
  std::memset(result.raw.byte, value, sizeof result.raw.byte);
  return result;
}

inline I16 Add(I16 a, I16 b) {
  return EachLane(a, b, [](int x, int y) { return x + y; });
}
inline I16 Subtract(I16 a, I16 b) {
  return EachLane(a, b, [](int x, int y) { return x - y; });
}
inline I16 AddSaturate(I16 a, I16 b) {
  return EachLane(a, b, [](int x, int y) { return Saturated16(x + y); });
}
inline I16 SubtractSaturate(I16 a, I16 b) {
  return EachLane(a, b, [](int x, int y) { return Saturated16(x - y); });
}
inline I16 MultiplyLow(I16 a, I16 b) {
  return EachLane(a, b, [](int x, int y) { return x * y; });
}
/// a[2i] * b[2i] + a[2i+1] * b[2i+1].
inline I32 MultiplyAdd(I16 a, I16 b) {
  I32 result;
  for (int i = 0; i < kLanes / 2; ++i) {
    const auto product = [&](int k) { return static_cast<std::uint32_t>(Lane(a, k) * Lane(b, k)); };
    SetLane(result, i, product(2 * i) + product(2 * i + 1));
  }
  return result;
}
inline I32 Add(I32 a, I32 b) {
  I32 result;
  for (int i = 0; i < kLanes / 2; ++i) SetLane(result, i, Lane(a, i) + Lane(b, i));
  return result;
}
inline I32 SplatI32(int value) {
  I32 result;
  for (int i = 0; i < kLanes / 2; ++i) SetLane(result, i, static_cast<std::uint32_t>(value));
  return result;
}
template <int kCount>
inline I32 ShiftRight(I32 a) {
  I32 result;
  for (int i = 0; i < kLanes / 2; ++i) {
    SetLane(result, i, static_cast<std::uint32_t>(static_cast<std::int32_t>(Lane(a, i)) >> kCount));
  }
  return result;
}
/// To 16-bit lanes with signed saturation, in the order that Zip*16 has left.
inline I16 JoinSigned(I32 low, I32 high) {
  I16 result;
  for (int i = 0; i < kLanes; ++i) {
    const std::uint32_t value = i < kLanes / 2 ? Lane(low, i) : Lane(high, i - kLanes / 2);
    SetLane(result, i, Saturated16(static_cast<std::int32_t>(value)));
  }
  return result;
}
inline I16 MinUnsigned(I16 a, I16 b) {
  return EachLane(a, b, [](int x, int y) { return (x & 0xFFFF) < (y & 0xFFFF) ? x : y; });
}
inline I16 Absolute(I16 a) {
  return EachLane(a, a, [](int x, int) { return x < 0 ? -x : x; });
}
inline I16 Less(I16 a, I16 b) {
  return EachLane(a, b, [](int x, int y) { return x < y ? -1 : 0; });
}
template <int kCount>
inline I16 ShiftRight(I16 a) {
  return EachLane(a, a, [](int x, int) { return x >> kCount; });
}
template <int kCount>
inline I16 ShiftRightLogical(I16 a) {
  return EachLane(a, a, [](int x, int) { return (x & 0xFFFF) >> kCount; });
}
/// Counts of 16 and more give 0.
inline I16 ShiftLeft(I16 a, int count) {
  return EachLane(a, a, [count](int x, int) {
    return count < 16 ? static_cast<int>(static_cast<unsigned>(x & 0xFFFF) << count) : 0;
  });
}

inline U8 And(U8 a, U8 b) {
  return EachByte(a, b, [](int x, int y) { return x & y; });
}
inline I16 And(I16 a, I16 b) { return AsI16(And(AsU8(a), AsU8(b))); }
inline U8 Or(U8 a, U8 b) {
  return EachByte(a, b, [](int x, int y) { return x | y; });
}
inline U8 Xor(U8 a, U8 b) {
  return EachByte(a, b, [](int x, int y) { return x ^ y; });
}
inline U8 Subtract(U8 a, U8 b) {
  return EachByte(a, b, [](int x, int y) { return x - y; });
}
inline U8 AddSaturateSigned(U8 a, U8 b) {
  return EachByte(a, b, [](int x, int y) { return ClampTo(SignedByte(x) + SignedByte(y), -128, 127); });
}
inline U8 Average(U8 a, U8 b) {
  return EachByte(a, b, [](int x, int y) { return (x + y + 1) >> 1; });
}
inline U8 Max(U8 a, U8 b) {
  return EachByte(a, b, [](int x, int y) { return x > y ? x : y; });
}
inline U8 Min(U8 a, U8 b) {
  return EachByte(a, b, [](int x, int y) { return x < y ? x : y; });
}

inline Raw ZipLow8(Raw a, Raw b) { return Zip<1, 0>(a, b); }
inline Raw ZipHigh8(Raw a, Raw b) { return Zip<1, 8>(a, b); }
inline Raw ZipLow16(Raw a, Raw b) { return Zip<2, 0>(a, b); }
inline Raw ZipHigh16(Raw a, Raw b) { return Zip<2, 8>(a, b); }
inline Raw ZipLow32(Raw a, Raw b) { return Zip<4, 0>(a, b); }
inline Raw ZipHigh32(Raw a, Raw b) { return Zip<4, 8>(a, b); }
inline Raw ZipLow64(Raw a, Raw b) { return Zip<8, 0>(a, b); }
inline Raw ZipHigh64(Raw a, Raw b) { return Zip<8, 8>(a, b); }
inline Halves Split(U8 a) {
  const Raw zero = SplatU8(0).raw;
  return {{ZipLow8(a.raw, zero)}, {ZipHigh8(a.raw, zero)}};
}
inline U8 Join(I16 low, I16 high) {
  U8 result;
  StoreNarrow(result.raw.byte, low);
  StoreNarrow(result.raw.byte + 8, high);
  return result;
}

}  // namespace
}  // namespace vidproc::VIDPROC_TARGET
