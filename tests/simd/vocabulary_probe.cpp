// Applies operations of one vocabulary to whole blocks; compiled once per level, as the kernels are.
#include "simd/vocabulary_probe.h"

#include "simd/simd.h"

namespace vidproc::VIDPROC_TARGET {
namespace {

using simd_probe::Blocks;
using simd_probe::kBlockBytes;
using simd_probe::Operation;

inline void Load(const std::uint8_t* bytes, U8& a) { a = LoadU8(bytes); }
inline void Load(const std::uint8_t* bytes, I16& a) { a = LoadI16(reinterpret_cast<const std::int16_t*>(bytes)); }
inline void Put(std::uint8_t* out, U8 a) { StoreTiles(out, 16, a); }
inline void Put(std::uint8_t* out, I16 a) { Store(reinterpret_cast<std::int16_t*>(out), a); }

/// On vectors of type Lanes.
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

constexpr Operation kOperations[] = {
    {"AddSaturate", On<I16, [](I16 a, I16 b) { return AddSaturate(a, b); }>},
    {"SubtractSaturate", On<I16, [](I16 a, I16 b) { return SubtractSaturate(a, b); }>},
    {"MultiplyLow", On<I16, [](I16 a, I16 b) { return MultiplyLow(a, b); }>},
    {"MultiplyRound", On<I16, [](I16 a, I16 b) { return MultiplyRound(a, And(b, SplatI16(0x7FFF))); }>},
    {"MinUnsigned", On<I16, [](I16 a, I16 b) { return MinUnsigned(a, b); }>},
    {"Absolute", On<I16, [](I16 a, I16) { return Absolute(a); }>},
    {"Less", On<I16, [](I16 a, I16 b) { return Less(a, b); }>},
    {"ShiftRight", On<I16, [](I16 a, I16) { return ShiftRight<7>(a); }>},
    {"ShiftRightLogical", On<I16, [](I16 a, I16) { return ShiftRightLogical<7>(a); }>},
    {"ShiftLeft", On<I16, [](I16 a, I16 b) { return Subtract(ShiftLeft(a, 0), ShiftLeft(b, 15)); }>},
    {"ShiftLeft, far", On<I16, [](I16 a, I16 b) { return Add(ShiftLeft(a, 16), ShiftLeft(b, 255)); }>},
    {"RoundShift", On<I16, [](I16 a, I16) { return Add(RoundShift<7>(a), RoundShiftNegated<6>(a)); }>},
    {"bytes: AddSaturate", On<U8, [](U8 a, U8 b) { return AddSaturate(a, b); }>},
    {"bytes: AddSaturateSigned", On<U8, [](U8 a, U8 b) { return AddSaturateSigned(a, b); }>},
    {"bytes: SubtractSaturateSigned", On<U8, [](U8 a, U8 b) { return SubtractSaturateSigned(a, b); }>},
    {"bytes: AbsoluteSigned", On<U8, [](U8 a, U8) { return AbsoluteSigned(a); }>},
    {"bytes: Average", On<U8, [](U8 a, U8 b) { return Average(a, b); }>},
    {"bytes: Max", On<U8, [](U8 a, U8 b) { return Max(a, b); }>},
    {"bytes: Min", On<U8, [](U8 a, U8 b) { return Min(a, b); }>},
    {"bytes: Equal", On<U8, [](U8 a, U8 b) { return Equal(a, And(b, a)); }>},
    {"LookUpBelow16", On<U8, [](U8 a, U8 b) { return LookUpBelow16(a, b); }>},
    {"MultiplyPairs", On<U8, [](U8 a, U8 b) { return MultiplyPairs(a, b); }>},
    {"Join", On<I16, [](I16 a, I16 b) { return Join(a, b); }>},
    {"JoinSigned", On<I16, [](I16 a, I16 b) { return JoinSigned(a, b); }>},
};

}  // namespace

extern const simd_probe::Vocabulary kVocabulary;
constinit const simd_probe::Vocabulary kVocabulary{kOperations, sizeof kOperations / sizeof kOperations[0]};

}  // namespace vidproc::VIDPROC_TARGET
