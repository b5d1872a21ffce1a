// The scaling kernels, written plainly per output sample: a vertical filter into 16-bit samples, a horizontal filter
// over each colour component, and whatever the kernel in question adds to them.
#pragma once

#include <cstddef>
#include <cstdint>

#include "reference/noise.h"
#include "reference/stream_state.h"

namespace reference {

using Bank = std::int16_t[16][16];

struct ScalerSettings {
  int inWidth = 0, inHeight = 0, outWidth = 0, outHeight = 0;
  std::size_t inStride = 0, outStride = 0;
  int horizontalUp = 0, horizontalDown = 0, verticalUp = 0, verticalDown = 0;
  Bank horizontal = {}, vertical = {};

  int horizontalTaps = 8, verticalTaps = 4;
  int precisionBits = 7;

  bool adaptiveTaps = false;  ///< taps lose weight as their samples differ from the centre tap's
  int adaptive = 1;           ///< the weight curve's shift plus 1
  bool motionGate = false;    ///< adaptive taps only where the picture rests
  bool temporal = false;      ///< blend with the history
  int temporalStrength = 0, temporalShift = 0;
  bool shiftLuma = false;
  int lumaGain = 64, lumaOffset = 0;
};

/// One frame of a scaling kernel: filters, noise over the packed result, rows to the destination. Source and
/// destination may overlap. `state` is used by adaptive kernels only.
void RunScaler(const ScalerSettings& settings, const Noise& noise, StreamState& state, const std::uint8_t* source,
               std::uint8_t* destination);

/// The post-processor's frame without resampling: a copy, and noise over the destination as it lies in memory.
void RunPassThrough(const ScalerSettings& settings, const Noise& noise, const std::uint8_t* source,
                    std::uint8_t* destination);

}  // namespace reference
