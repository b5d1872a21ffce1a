// Separable scaling as the library's scaler defines it: positions from centres, 7 bits, vertical pass first, a byte
// between.
#pragma once

#include <functional>

#include "filters/phase_bank.h"
#include "picture.h"

struct TapSet {
  int vertical, horizontal;
};

/// Fills the bank of one axis of one step, whose ratio is up:down.
using BankDesign = std::function<void(int up, int down, int taps, vidproc::filters::Bank& bank)>;

/// Axes that shrink further than their taps reach are first halved by the banks of `halving`.
Picture Resample(const Picture& in, int width, int height, TapSet taps, const BankDesign& design,
                 const BankDesign& halving);
