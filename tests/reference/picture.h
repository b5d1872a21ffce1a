// The checked interface's processing, written plainly per sample: planes of samples, exact sums, one axis after the
// other over whole planes. Banks come from the caller; nothing else is shared with the library.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <vector>

#include "reference/noise.h"
#include "reference/rows.h"

namespace reference {

/// One component; reading beyond its borders repeats the nearest sample.
struct Plane {
  int width = 0, height = 0;
  std::vector<std::uint8_t> samples;

  Plane() = default;
  Plane(int width, int height)
      : width(width), height(height), samples(static_cast<std::size_t>(width) * static_cast<std::size_t>(height)) {}
  std::uint8_t& At(int x, int y);
  std::uint8_t Nearest(int x, int y) const;
  const std::uint8_t* NearestRow(int y) const;
  void SetRow(int y, const Row& row);
};

/// How chroma samples lie: every how many luma rows there is one row of them, and whether they sit in the middle of
/// their pair of luma samples or beside its first.
struct Chroma {
  bool halvedVertically = false;
  bool centreSited = false;
};

struct Picture {
  Chroma chroma;
  Plane y, cb, cr;
};

/// An axis's bank for a step of `up` to `down`: one of the halvings before the last step, or the last step, of which
/// the output samples may lie on the input's.
struct BankRequest {
  int taps;
  int up, down;
  bool halving;
  bool samePlaces;
};
using Bank = std::int16_t[16][16];
using BankSource = std::function<void(const BankRequest&, Bank&)>;

struct ScaleSettings {
  int outWidth = 0, outHeight = 0;
  Chroma outChroma;
  int verticalTaps = 4, horizontalTaps = 8;
  int precisionBits = 7;
  bool fromCorners = false;             ///< positions counted from the corner, chroma rows repeated and dropped
  bool halvesFirst = true;              ///< ratios that the taps cannot carry are halved first
  bool filtersWithoutResizing = false;  ///< the bank changes samples at equal sizes, too
  BankSource bank;
};
Picture Scale(const Picture& in, const ScaleSettings& settings);

struct DenoiseSettings {
  int edge = 0;  ///< 0: no spatial filter
  int verticalTaps = 4, horizontalTaps = 8;
  std::int16_t vertical[16] = {}, horizontal[16] = {};  ///< the banks' first phases
  int temporalStrength = 0, temporalShift = 0;
  bool motionSmoothing = false;
  bool pairsAtBorders = false;  ///< luma beyond a row's ends repeats the end's pair of samples
};

/// What one frame's denoising leaves for the next.
struct DenoiseState {
  bool hasHistory = false;
  Picture history, previousInput, previousVertical;
};
Picture Denoise(const Picture& in, const DenoiseSettings& settings, DenoiseState& state);

/// ((y - offset) * gain) >> 6 in a 16-bit lane.
void ShiftLuma(Plane& luma, int gain, int offset);

/// Noise laid out along the rows of the plane.
void DitherLuma(Plane& luma, const Noise& noise);

}  // namespace reference
