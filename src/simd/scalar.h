// Plain C++ on arrays of the size of one 128-bit vector: any processor, and the meaning of each operation in words.
#pragma once

#include <cstring>

#include "compiler/compiler.h"

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

VIDPROC_ALWAYS_INLINE int Lane(I16 a, int i) {
  return static_cast<std::int16_t>(static_cast<std::uint16_t>(a.raw.byte[2 * i] | a.raw.byte[2 * i + 1] << 8));
}
VIDPROC_ALWAYS_INLINE void SetLane(I16& a, int i, int value) {
  a.raw.byte[2 * i] = static_cast<std::uint8_t>(value);
  a.raw.byte[2 * i + 1] = static_cast<std::uint8_t>(static_cast<unsigned>(value) >> 8);
}
VIDPROC_ALWAYS_INLINE int ClampTo(int value, int low, int high) {
  return value < low ? low : value > high ? high : value;
}
VIDPROC_ALWAYS_INLINE int Saturated16(int value) { return ClampTo(value, -32768, 32767); }
VIDPROC_ALWAYS_INLINE int SignedByte(int value) { return static_cast<std::int8_t>(value); }

VIDPROC_ALWAYS_INLINE std::uint32_t Lane(I32 a, int i) {
  const std::uint8_t* bytes = a.raw.byte + 4 * i;
  return bytes[0] | std::uint32_t{bytes[1]} << 8 | std::uint32_t{bytes[2]} << 16 | std::uint32_t{bytes[3]} << 24;
}
VIDPROC_ALWAYS_INLINE void SetLane(I32& a, int i, std::uint32_t value) {
  for (int k = 0; k < 4; ++k) a.raw.byte[4 * i + k] = static_cast<std::uint8_t>(value >> (8 * k));
}

/// One value of every lane, or byte, from those of a and b.
template <class Operation>
VIDPROC_ALWAYS_INLINE I16 EachLane(I16 a, I16 b, Operation operation) {
  I16 result;
  for (int i = 0; i < kLanes; ++i) SetLane(result, i, operation(Lane(a, i), Lane(b, i)));
  return result;
}
template <class Operation>
VIDPROC_ALWAYS_INLINE U8 EachByte(U8 a, U8 b, Operation operation) {
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

inline I16 LoadI16(const std::int16_t* p) {
  I16 result;
  for (int i = 0; i < kLanes; ++i) {
    std::int16_t value;
    std::memcpy(&value, p + i, sizeof value);
    SetLane(result, i, value);
  }
  return result;
}
inline U8 LoadU8(const std::uint8_t* p) {
  U8 result;
  std::memcpy(result.raw.byte, p, sizeof result.raw.byte);
  return result;
}
inline void Store(std::int16_t* p, I16 a) {
  for (int i = 0; i < kLanes; ++i) {
    const auto value = static_cast<std::int16_t>(Lane(a, i));
    std::memcpy(p + i, &value, sizeof value);
  }
}
inline void Store(std::uint8_t* p, U8 a) { std::memcpy(p, a.raw.byte, sizeof a.raw.byte); }
inline void Store(std::int32_t* p, I32 a) {
  for (int i = 0; i < kLanes / 2; ++i) {
    const std::uint32_t value = Lane(a, i);
    std::memcpy(p + i, &value, sizeof value);
  }
}
inline I16 LoadWiden(const std::uint8_t* p) {
  I16 result;
  for (int i = 0; i < kLanes; ++i) SetLane(result, i, p[i]);
  return result;
}
inline void StoreNarrow(std::uint8_t* p, I16 a) {
  for (int i = 0; i < kLanes; ++i) p[i] = static_cast<std::uint8_t>(ClampTo(Lane(a, i), 0, 255));
}
inline U8 LoadHalves(const std::uint8_t* low, const std::uint8_t* high) {
  U8 result;
  std::memcpy(result.raw.byte, low, sizeof result.raw.byte / 2);
  std::memcpy(result.raw.byte + sizeof result.raw.byte / 2, high, sizeof result.raw.byte / 2);
  return result;
}

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
/// Counts of 16 and more give 0; negative ones are not allowed.
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
inline U8 SubtractSaturateSigned(U8 a, U8 b) {
  return EachByte(a, b, [](int x, int y) { return ClampTo(SignedByte(x) - SignedByte(y), -128, 127); });
}
inline U8 AbsoluteSigned(U8 a) {
  return EachByte(a, a, [](int x, int) { return SignedByte(x) < 0 ? -SignedByte(x) : SignedByte(x); });
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
inline U8 Join(I16 low, I16 high) {
  U8 result;
  StoreNarrow(result.raw.byte, low);
  StoreNarrow(result.raw.byte + kLanes, high);
  return result;
}
inline U8 JoinSigned(I16 low, I16 high) {
  U8 result;
  for (int i = 0; i < kVectorBytes; ++i) {
    const int value = i < kLanes ? Lane(low, i) : Lane(high, i - kLanes);
    result.raw.byte[i] = static_cast<std::uint8_t>(ClampTo(value, -128, 127));
  }
  return result;
}

inline U8 AndNot(U8 mask, U8 a) {
  return EachByte(mask, a, [](int x, int y) { return ~x & y; });
}
inline U8 Add(U8 a, U8 b) {
  return EachByte(a, b, [](int x, int y) { return x + y; });
}
inline U8 AddSaturate(U8 a, U8 b) {
  return EachByte(a, b, [](int x, int y) { return ClampTo(x + y, 0, 255); });
}
inline U8 Equal(U8 a, U8 b) {
  return EachByte(a, b, [](int x, int y) { return x == y ? 0xFF : 0; });
}

constexpr bool kHasByteShuffle = false;

inline U8 LookUpBelow16(U8 table, U8 index) {
  return EachByte(index, index, [&table](int i, int) { return i < 16 ? int{table.raw.byte[i]} : 0; });
}
inline U8 ShuffleWindows(U8 windows, U8 index) { return LookUpBelow16(windows, index); }
inline I16 MultiplyPairs(U8 a, U8 b) {
  I16 result;
  for (int i = 0; i < kLanes; ++i) {
    const auto product = [&](int k) { return a.raw.byte[k] * SignedByte(b.raw.byte[k]); };
    SetLane(result, i, Saturated16(product(2 * i) + product(2 * i + 1)));
  }
  return result;
}
inline I16 MultiplyRound(I16 a, I16 b) {
  return EachLane(a, b, [](int x, int y) { return (x * y + 16384) >> 15; });
}

}  // namespace
}  // namespace vidproc::VIDPROC_TARGET

#include "simd/one_tile.h"
