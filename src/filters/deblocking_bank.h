// Deblocking bank: a Gaussian low-pass whose width is the deblocking level in sixteenths of a pixel.
#pragma once

#include <cstdint>

#include "filters/phase_bank.h"

namespace vidproc::filters {

inline constexpr int kDeblockingTaps = 8;
inline constexpr int kDeblockingBits = 7;

/// How fast deblocking of a level lets go as the step across an edge grows.
constexpr std::int16_t EdgeSensitivity(int level) { return static_cast<std::int16_t>((51 - level) >> 2); }

/// Fills taps 0..taps - 1 of every phase; taps is at most kDeblockingTaps.
void DesignDeblockingBank(std::uint8_t level, int taps, int precisionBits, std::int16_t (*bank)[kDeblockingTaps]);

}  // namespace vidproc::filters
