// Applies every operation of one vocabulary to whole blocks; compiled once per level, as the kernels are.
#include "simd/vocabulary_probe.h"

#include "simd/simd.h"

namespace vidproc::VIDPROC_TARGET {
namespace {

using simd_probe::Blocks;
using simd_probe::kBlockBytes;
using simd_probe::Operation;

inline const std::int16_t* Values(const std::uint8_t* bytes) { return reinterpret_cast<const std::int16_t*>(bytes); }
inline std::int16_t* Values(std::uint8_t* bytes) { return reinterpret_cast<std::int16_t*>(bytes); }

inline void Load(const std::uint8_t* bytes, U8& a) { a = LoadU8(bytes); }
inline void Load(const std::uint8_t* bytes, I16& a) { a = LoadI16(Values(bytes)); }
inline void Put(std::uint8_t* out, U8 a) { Store(out, a); }
inline void Put(std::uint8_t* out, I16 a) { Store(Values(out), a); }
inline void Put(std::uint8_t* out, Halves a) {
  Put(out, a.low);
  Put(out + kBlockBytes, a.high);
}

/// Operations that treat tiles alike, on vectors of type Lanes.
template <class Lanes, auto kOperation>
void On(Blocks& blocks) {
  for (int i = 0; i < kBlockBytes; i += kVectorBytes) {
    Lanes a;
    Lanes b;
    Load(blocks.a + i, a);
    Load(blocks.b + i, b);
    Put(blocks.out + i, kOperation(a, b));
  }
}

void StoreSumsOfAll(Blocks& blocks) {
  I32 squares = AsI32(SplatI16(0));
  I32 products = AsI32(SplatI16(0));
  for (int i = 0; i < kBlockBytes; i += kVectorBytes) {
    const I16 a = LoadI16(Values(blocks.a + i));
    squares = Add(squares, MultiplyAdd(a, a));
    products = Add(products, MultiplyAdd(a, LoadI16(Values(blocks.b + i))));
  }
  StoreSums(reinterpret_cast<std::int32_t*>(blocks.out), squares, products, squares);
}
/// Operations on lanes in memory's order, whose vectors adjoin.
void WidenAndNarrow(Blocks& blocks) {
  for (int i = 0; i < kBlockBytes / 2; i += kLanes) {
    Store(Values(blocks.out) + i, LoadWiden(blocks.a + i));
    StoreNarrow(blocks.out + kBlockBytes + i, LoadI16(Values(blocks.b) + i));
  }
}
void JoinTwo(Blocks& blocks) {
  for (int i = 0; i < kBlockBytes / 2; i += 2 * kLanes) {
    const I16 a[] = {LoadI16(Values(blocks.a) + i), LoadI16(Values(blocks.a) + i + kLanes)};
    const I16 b[] = {LoadI16(Values(blocks.b) + i), LoadI16(Values(blocks.b) + i + kLanes)};
    const TwoVectors both = JoinInterleaved(a[0], a[1], b[0], b[1]);
    Store(blocks.out + 2 * i, both.first);
    Store(blocks.out + 2 * i + kVectorBytes, both.second);
    Store(blocks.out + kBlockBytes + i, JoinInOrder(a[0], a[1]));
  }
}
void LoadPieces(Blocks& blocks) {
  for (int i = 0; i < kBlockBytes / 2; i += kVectorBytes) {
    const U8 halves = LoadHalves(blocks.a + i, blocks.a + i + kVectorBytes / 2);
    const Halves split = LoadSplit(Values(blocks.b) + i);
    StoreTiles(blocks.out + i, 16, Xor(halves, LoadTilesU8(blocks.b + i, 16)));
    Store(blocks.out + kBlockBytes + i, Join(split.low, split.high));
  }
}

/// The same 16 bytes in every tile: whichever is stored last, it is the result.
void TransposeBytes(Blocks& blocks) {
  U8 rows[16];
  for (int i = 0; i < 16; ++i) rows[i] = LoadRepeated(blocks.a + 16 * i);
  TransposeTiles(rows);
  for (int i = 0; i < 16; ++i) StoreTiles(blocks.out + 16 * i, 0, rows[i]);
}
void TransposeWords(Blocks& blocks) {
  I16 rows[8];
  for (int i = 0; i < 8; ++i) rows[i] = LoadTilesI16(Values(blocks.a) + 8 * i, 0);
  TransposeTiles(rows);
  for (int i = 0; i < 8; ++i) StoreTiles(blocks.out + 16 * i, 0, AsU8(rows[i]));
}

constexpr Operation kOperations[] = {
    {"Add", On<I16, [](I16 a, I16 b) { return Add(a, b); }>},
    {"Subtract", On<I16, [](I16 a, I16 b) { return Subtract(a, b); }>},
    {"AddSaturate", On<I16, [](I16 a, I16 b) { return AddSaturate(a, b); }>},
    {"SubtractSaturate", On<I16, [](I16 a, I16 b) { return SubtractSaturate(a, b); }>},
    {"MultiplyLow", On<I16, [](I16 a, I16 b) { return MultiplyLow(a, b); }>},
    {"MultiplyRound", On<I16, [](I16 a, I16 b) { return MultiplyRound(a, And(b, SplatI16(0x7FFF))); }>},
    {"MinUnsigned", On<I16, [](I16 a, I16 b) { return MinUnsigned(a, b); }>},
    {"Absolute", On<I16, [](I16 a, I16) { return Absolute(a); }>},
    {"Less", On<I16, [](I16 a, I16 b) { return Less(a, b); }>},
    {"And", On<I16, [](I16 a, I16 b) { return And(a, b); }>},
    {"ShiftRight", On<I16, [](I16 a, I16) { return ShiftRight<7>(a); }>},
    {"ShiftRightLogical", On<I16, [](I16 a, I16) { return ShiftRightLogical<7>(a); }>},
    {"ShiftLeft", On<I16, [](I16 a, I16 b) { return Subtract(ShiftLeft(a, 0), ShiftLeft(b, 15)); }>},
    {"ShiftLeft, far", On<I16, [](I16 a, I16 b) { return Add(ShiftLeft(a, 16), ShiftLeft(b, 255)); }>},
    {"RoundShift", On<I16, [](I16 a, I16) { return Add(RoundShift<7>(a), RoundShiftNegated<6>(a)); }>},
    {"bytes: And", On<U8, [](U8 a, U8 b) { return And(a, b); }>},
    {"bytes: Or", On<U8, [](U8 a, U8 b) { return Or(a, b); }>},
    {"bytes: Xor", On<U8, [](U8 a, U8 b) { return Xor(a, b); }>},
    {"bytes: AndNot", On<U8, [](U8 a, U8 b) { return AndNot(a, b); }>},
    {"bytes: Add", On<U8, [](U8 a, U8 b) { return Add(a, b); }>},
    {"bytes: Subtract", On<U8, [](U8 a, U8 b) { return Subtract(a, b); }>},
    {"bytes: AddSaturate", On<U8, [](U8 a, U8 b) { return AddSaturate(a, b); }>},
    {"bytes: AddSaturateSigned", On<U8, [](U8 a, U8 b) { return AddSaturateSigned(a, b); }>},
    {"bytes: SubtractSaturateSigned", On<U8, [](U8 a, U8 b) { return SubtractSaturateSigned(a, b); }>},
    {"bytes: AbsoluteSigned", On<U8, [](U8 a, U8) { return AbsoluteSigned(a); }>},
    {"bytes: Average", On<U8, [](U8 a, U8 b) { return Average(a, b); }>},
    {"bytes: Max", On<U8, [](U8 a, U8 b) { return Max(a, b); }>},
    {"bytes: Min", On<U8, [](U8 a, U8 b) { return Min(a, b); }>},
    {"bytes: Equal", On<U8, [](U8 a, U8 b) { return Equal(a, And(b, a)); }>},
    {"LookUpBelow16", On<U8, [](U8 a, U8 b) { return LookUpBelow16(a, b); }>},
    {"LookUpBelow16, small", On<U8, [](U8 a, U8 b) { return LookUpBelow16(a, And(b, SplatU8(0x1F))); }>},
    {"MultiplyPairs", On<U8, [](U8 a, U8 b) { return MultiplyPairs(a, b); }>},
    {"EvenBytes", On<U8, [](U8 a, U8) { return EvenBytes(a); }>},
    {"OddBytes", On<U8, [](U8 a, U8) { return OddBytes(a); }>},
    {"Interleave", On<U8, [](U8 a, U8 b) { return Interleave(EvenBytes(a), OddBytes(b)); }>},
    {"Join", On<I16, [](I16 a, I16 b) { return Join(a, b); }>},
    {"JoinSigned", On<I16, [](I16 a, I16 b) { return JoinSigned(a, b); }>},
    {"Split", On<U8, [](U8 a, U8) { return Split(a); }>},
    {"MultiplyPairsOf", On<U8, [](U8 a, U8 b) { return MultiplyPairsOf(a, b, b, a); }>},
    {"MultiplyPairsOf, one", On<U8, [](U8 a, U8 b) { return MultiplyPairsOf(a, b, SplatPair(-128, 127)); }>},
    {"StoreSums", StoreSumsOfAll},
    {"LoadWiden, StoreNarrow", WidenAndNarrow},
    {"JoinInterleaved, JoinInOrder", JoinTwo},
    {"TransposeTiles of bytes", TransposeBytes},
    {"TransposeTiles of words", TransposeWords},
    {"LoadHalves, LoadTiles, LoadSplit", LoadPieces},
};

}  // namespace

extern const simd_probe::Vocabulary kVocabulary;
constinit const simd_probe::Vocabulary kVocabulary{kOperations, sizeof kOperations / sizeof kOperations[0]};

}  // namespace vidproc::VIDPROC_TARGET
