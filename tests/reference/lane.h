// Arithmetic of one signed 16-bit lane. Values travel as int; every function returns what the lane would hold.
#pragma once

#include <algorithm>
#include <cstdint>

namespace reference {

inline int Wrap16(int value) { return static_cast<std::int16_t>(value); }
inline int LowWord(int value) { return static_cast<std::uint16_t>(value); }
inline int Saturate16(int value) { return std::clamp(value, -32768, 32767); }

inline int MultiplyLow(int a, int b) { return Wrap16(a * b); }
inline int AddSaturated(int a, int b) { return Saturate16(a + b); }
inline int SubtractSaturated(int a, int b) { return Saturate16(a - b); }

inline std::uint8_t ClampToByte(int value) { return static_cast<std::uint8_t>(std::clamp(value, 0, 255)); }

/// The square of a difference as far as the weight curve looks at it: its low 16 bits, 256 at most.
inline int CappedSquare(int difference) { return std::min(LowWord(difference * difference), 256); }

/// 256 at a square of 0, falling to 0. Bits shifted out of the 16-bit lane are lost: far differences may count again.
inline int DifferenceWeight(int cappedSquare, int shift) {
  return 256 - (shift > 15 ? 0 : std::min(LowWord(cappedSquare << shift), 256));
}

/// Share of the history, in 128ths, for a difference whose capped square is given.
inline int HistoryWeight(int cappedSquare, int shift, int strength) {
  return (DifferenceWeight(cappedSquare, shift) * strength + 128) >> 8;
}

/// ((128 - weight) * current + weight * history + 64) >> 7. The shift is logical: a sum below 0 gives 255.
inline std::uint8_t Blend(int current, int history, int weight) {
  const int sum = AddSaturated(MultiplyLow(128 - weight, current), MultiplyLow(weight, history));
  return ClampToByte(LowWord(AddSaturated(sum, 64)) >> 7);
}

}  // namespace reference
