// The compilers' own vectors, of 128 bits, one tile: for processors without a vocabulary of their own.
//
// A vector has its bytes in the order of a little-endian processor, on which byte 2i is the low half of 16-bit lane i.
// A big-endian one gets the same by counting from the other end: byte i is its byte 15 - i, lane i its lane 7 - i.
// Loads and stores turn vectors round; between them only operations that name places notice.
#pragma once

#include <bit>
#include <cstring>
#include <utility>

namespace vidproc::VIDPROC_TARGET {
namespace {

using Bytes [[gnu::vector_size(16)]] = std::uint8_t;
using SignedBytes [[gnu::vector_size(16)]] = std::int8_t;
using Words [[gnu::vector_size(16)]] = std::int16_t;
using UnsignedWords [[gnu::vector_size(16)]] = std::uint16_t;
using DoubleWords [[gnu::vector_size(16)]] = std::int32_t;
using UnsignedDoubleWords [[gnu::vector_size(16)]] = std::uint32_t;
using QuadWords [[gnu::vector_size(16)]] = std::uint64_t;

using Raw = Bytes;

}  // namespace
}  // namespace vidproc::VIDPROC_TARGET

#include "simd/vector_types.h"

namespace vidproc::VIDPROC_TARGET {
namespace {

constexpr bool kCountsFromEnd = std::endian::native == std::endian::big;

template <class Lanes>
constexpr int kLanesOf = 16 / sizeof(Lanes{}[0]);

template <class Lanes, class From>
inline Lanes As(From a) {
  return reinterpret_cast<Lanes>(a);
}

template <class Lanes, std::size_t... kLane>
inline Lanes TurnRound(Lanes a, std::index_sequence<kLane...>) {
  return __builtin_shufflevector(a, a, (kLanesOf<Lanes> - 1 - static_cast<int>(kLane))...);
}
template <class Lanes>
inline Lanes InOrder(Lanes a) {
  if constexpr (!kCountsFromEnd) return a;
  return TurnRound(a, std::make_index_sequence<kLanesOf<Lanes>>());
}
template <class Lanes>
inline Raw Load(const void* p) {
  Lanes a;
  std::memcpy(&a, p, sizeof a);
  return As<Raw>(InOrder(a));
}
template <class Lanes>
inline void Store(void* p, Raw a) {
  const Lanes inOrder = InOrder(As<Lanes>(a));
  std::memcpy(p, &inOrder, sizeof inOrder);
}
/// Eight bytes as a number whose lowest byte is the first, and two such numbers as a vector.
inline std::uint64_t Load64(const std::uint8_t* p) {
  std::uint64_t value;
  std::memcpy(&value, p, sizeof value);
  return kCountsFromEnd ? __builtin_bswap64(value) : value;
}
inline void Store64(std::uint8_t* p, std::uint64_t value) {
  value = kCountsFromEnd ? __builtin_bswap64(value) : value;
  std::memcpy(p, &value, sizeof value);
}
inline Raw FromHalves(std::uint64_t low, std::uint64_t high) { return As<Raw>(InOrder(QuadWords{low, high})); }

/// Lane i of the result is lane kPlace(i) of a and b side by side.
template <auto kPlace, class Lanes, std::size_t... kLane>
inline Lanes ShuffleLanes(Lanes a, Lanes b, std::index_sequence<kLane...>) {
  constexpr int kLast = kLanesOf<Lanes> - 1;
  if constexpr (kCountsFromEnd) {
    return __builtin_shufflevector(b, a, (2 * kLast + 1 - kPlace(kLast - static_cast<int>(kLane)))...);
  } else {
    return __builtin_shufflevector(a, b, kPlace(static_cast<int>(kLane))...);
  }
}
template <class Lanes, auto kPlace>
inline Raw Choose(Raw a, Raw b) {
  return As<Raw>(ShuffleLanes<kPlace>(As<Lanes>(a), As<Lanes>(b), std::make_index_sequence<kLanesOf<Lanes>>()));
}
/// The lanes of a and b from lane kFirst on, in turn.
template <class Lanes, int kFirst>
inline Raw Zip(Raw a, Raw b) {
  return Choose<Lanes, [](int i) { return kFirst + i / 2 + i % 2 * kLanesOf<Lanes>; }>(a, b);
}
/// Every other lane of a, then of b, from lane kFirst on.
template <class Lanes, int kFirst>
inline Raw EveryOther(Raw a, Raw b) {
  return Choose<Lanes, [](int i) { return kFirst + 2 * i; }>(a, b);
}
inline Raw ZipLow8(Raw a, Raw b) { return Zip<Bytes, 0>(a, b); }
inline Raw ZipHigh8(Raw a, Raw b) { return Zip<Bytes, 8>(a, b); }
inline Raw ZipLow16(Raw a, Raw b) { return Zip<Words, 0>(a, b); }
inline Raw ZipHigh16(Raw a, Raw b) { return Zip<Words, 4>(a, b); }
inline Raw ZipLow32(Raw a, Raw b) { return Zip<DoubleWords, 0>(a, b); }
inline Raw ZipHigh32(Raw a, Raw b) { return Zip<DoubleWords, 2>(a, b); }
inline Raw ZipLow64(Raw a, Raw b) { return Zip<QuadWords, 0>(a, b); }
inline Raw ZipHigh64(Raw a, Raw b) { return Zip<QuadWords, 1>(a, b); }

inline Words Signed(I16 a) { return As<Words>(a.raw); }
inline UnsignedWords Unsigned(I16 a) { return As<UnsignedWords>(a.raw); }
inline DoubleWords Signed(I32 a) { return As<DoubleWords>(a.raw); }

template <class Lanes>
inline Lanes Least(Lanes a, Lanes b) {
  return a < b ? a : b;
}
template <class Lanes>
inline Lanes Greatest(Lanes a, Lanes b) {
  return a > b ? a : b;
}
template <int kLow, int kHigh, class Lanes>
inline Raw Clamped(Lanes a) {
  return As<Raw>(Least(Greatest(a, Lanes{} + kLow), Lanes{} + kHigh));
}
/// a + b and a - b of signed lanes: b is kept to what a leaves of the range from kLow to kHigh.
template <int kLow, int kHigh, class Lanes>
inline Raw SaturatedSum(Lanes a, Lanes b) {
  const Lanes zero{};
  return As<Raw>(a + Least(Greatest(b, kLow - Least(a, zero)), kHigh - Greatest(a, zero)));
}
template <int kLow, int kHigh, class Lanes>
inline Raw SaturatedDifference(Lanes a, Lanes b) {
  const Lanes minusOne = Lanes{} - 1;
  return As<Raw>(a - Least(Greatest(b, Greatest(a, minusOne) - kHigh), Least(a, minusOne) - kLow));
}

inline I16 LoadI16(const std::int16_t* p) { return {Load<Words>(p)}; }
inline U8 LoadU8(const std::uint8_t* p) { return {Load<Bytes>(p)}; }
inline void Store(std::int16_t* p, I16 a) { Store<Words>(p, a.raw); }
inline void Store(std::uint8_t* p, U8 a) { Store<Bytes>(p, a.raw); }
inline void Store(std::int32_t* p, I32 a) { Store<DoubleWords>(p, a.raw); }
inline I16 LoadWiden(const std::uint8_t* p) { return {ZipLow8(FromHalves(Load64(p), 0), Raw{})}; }
inline U8 LoadHalves(const std::uint8_t* low, const std::uint8_t* high) {
  return {FromHalves(Load64(low), Load64(high))};
}

inline I16 SplatI16(int value) { return {As<Raw>(Words{} + static_cast<std::int16_t>(value))}; }
inline U8 SplatU8(int value) { return {Raw{} + static_cast<std::uint8_t>(value)}; }
inline I32 SplatI32(int value) { return {As<Raw>(DoubleWords{} + value)}; }

inline I16 Add(I16 a, I16 b) { return {As<Raw>(Unsigned(a) + Unsigned(b))}; }
inline I16 Subtract(I16 a, I16 b) { return {As<Raw>(Unsigned(a) - Unsigned(b))}; }
inline I16 AddSaturate(I16 a, I16 b) { return {SaturatedSum<-32768, 32767>(Signed(a), Signed(b))}; }
inline I16 SubtractSaturate(I16 a, I16 b) { return {SaturatedDifference<-32768, 32767>(Signed(a), Signed(b))}; }
inline I16 MultiplyLow(I16 a, I16 b) { return {As<Raw>(Unsigned(a) * Unsigned(b))}; }
/// The high 16 bits of products.
inline I16 MultiplyHigh(I16 a, I16 b) {
#ifdef __SSE2__
  // Compilers know this loop for an instruction. g++ 12 makes wrong code of it for processors without vectors.
  std::int16_t product[kLanes];
  std::int16_t factor[kLanes];
  std::memcpy(product, &a, sizeof product);
  std::memcpy(factor, &b, sizeof factor);
  for (int i = 0; i < kLanes; ++i) product[i] = static_cast<std::int16_t>((product[i] * factor[i]) >> 16);
  std::memcpy(&a, product, sizeof product);
  return a;
#else
  const auto pairsA = As<DoubleWords>(a.raw), pairsB = As<DoubleWords>(b.raw);
  const auto low = As<UnsignedDoubleWords>((pairsA << 16 >> 16) * (pairsB << 16 >> 16));
  const auto high = As<UnsignedDoubleWords>((pairsA >> 16) * (pairsB >> 16));
  return {As<Raw>(low >> 16 | (high & 0xFFFF0000u))};
#endif
}
inline I32 Add(I32 a, I32 b) { return {As<Raw>(As<UnsignedDoubleWords>(a.raw) + As<UnsignedDoubleWords>(b.raw))}; }
inline I32 MultiplyAdd(I16 a, I16 b) {
  const Raw low = MultiplyLow(a, b).raw;
  const Raw high = MultiplyHigh(a, b).raw;
  const Raw first = ZipLow16(low, high);
  const Raw second = ZipHigh16(low, high);
  return Add(I32{EveryOther<DoubleWords, 0>(first, second)}, I32{EveryOther<DoubleWords, 1>(first, second)});
}
template <int kCount>
inline I32 ShiftRight(I32 a) {
  return {As<Raw>(Signed(a) >> kCount)};
}
inline I16 JoinSigned(I32 low, I32 high) {
  return {EveryOther<Words, 0>(Clamped<-32768, 32767>(Signed(low)), Clamped<-32768, 32767>(Signed(high)))};
}
inline I16 MinUnsigned(I16 a, I16 b) { return {As<Raw>(Least(Unsigned(a), Unsigned(b)))}; }
inline I16 Absolute(I16 a) { return {As<Raw>(Signed(a) < 0 ? -Unsigned(a) : Unsigned(a))}; }
inline I16 Less(I16 a, I16 b) { return {As<Raw>(Signed(a) < Signed(b))}; }
template <int kCount>
inline I16 ShiftRight(I16 a) {
  return {As<Raw>(Signed(a) >> kCount)};
}
template <int kCount>
inline I16 ShiftRightLogical(I16 a) {
  return {As<Raw>(Unsigned(a) >> kCount)};
}
/// Counts of 16 and more give 0; negative ones are not allowed.
inline I16 ShiftLeft(I16 a, int count) { return {count < 16 ? As<Raw>(Unsigned(a) << count) : Raw{}}; }

inline I16 And(I16 a, I16 b) { return {a.raw & b.raw}; }
inline U8 And(U8 a, U8 b) { return {a.raw & b.raw}; }
inline U8 Or(U8 a, U8 b) { return {a.raw | b.raw}; }
inline U8 Xor(U8 a, U8 b) { return {a.raw ^ b.raw}; }
inline U8 AndNot(U8 mask, U8 a) { return {~mask.raw & a.raw}; }
inline U8 Add(U8 a, U8 b) { return {a.raw + b.raw}; }
inline U8 Subtract(U8 a, U8 b) { return {a.raw - b.raw}; }
inline U8 AddSaturate(U8 a, U8 b) {
  const Raw sum = a.raw + b.raw;
  return {sum | As<Raw>(sum < a.raw)};
}
inline U8 AddSaturateSigned(U8 a, U8 b) {
  return {SaturatedSum<-128, 127>(As<SignedBytes>(a.raw), As<SignedBytes>(b.raw))};
}
inline U8 SubtractSaturateSigned(U8 a, U8 b) {
  return {SaturatedDifference<-128, 127>(As<SignedBytes>(a.raw), As<SignedBytes>(b.raw))};
}
inline U8 AbsoluteSigned(U8 a) { return {Least(a.raw, -a.raw)}; }
inline U8 Average(U8 a, U8 b) { return {(a.raw | b.raw) - ((a.raw ^ b.raw) >> 1)}; }
inline U8 Max(U8 a, U8 b) { return {Greatest(a.raw, b.raw)}; }
inline U8 Min(U8 a, U8 b) { return {Least(a.raw, b.raw)}; }
inline U8 Equal(U8 a, U8 b) { return {As<Raw>(a.raw == b.raw)}; }

inline U8 Join(I16 low, I16 high) {
  return {EveryOther<Bytes, 0>(Clamped<0, 255>(Signed(low)), Clamped<0, 255>(Signed(high)))};
}
inline U8 JoinSigned(I16 low, I16 high) {
  return {EveryOther<Bytes, 0>(Clamped<-128, 127>(Signed(low)), Clamped<-128, 127>(Signed(high)))};
}
inline void StoreNarrow(std::uint8_t* p, I16 a) { Store64(p, InOrder(As<QuadWords>(Join(a, a).raw))[0]); }

/// The product's bits 30..15, plus bit 14.
inline I16 MultiplyRound(I16 a, I16 b) {
  const I16 low = MultiplyLow(a, b);
  const auto upper = Unsigned(MultiplyHigh(a, b)) << 1 | Unsigned(low) >> 15;
  return {As<Raw>(upper + (Unsigned(low) << 1 >> 15))};
}

}  // namespace
}  // namespace vidproc::VIDPROC_TARGET

#include "simd/byte_look_ups.h"
#include "simd/byte_pairs.h"
#include "simd/one_tile.h"
