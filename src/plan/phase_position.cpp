#include "plan/phase_position.h"

namespace vidproc {

PhasePosition PositionRule::Locate(std::int64_t output) const {
  const std::int64_t scaled = step * output + start;
  std::int64_t source = scaled / unit;
  std::int64_t rest = scaled % unit;
  if (rest < 0) {
    --source;
    rest += unit;
  }
  return {static_cast<std::int32_t>(source), static_cast<std::int32_t>(rest * kPhases / unit)};
}

// Output k lies at ((2 k spacing + first) / 2 * down / up - first of the input / 2) / spacing of the input; a
// thirty-second more turns rounding down into rounding to the nearest sixteenth.
PositionRule AlignCentres(const Ratio& ratio, const SampleGrid& in, const SampleGrid& out) {
  const std::int64_t up = ratio.up, down = ratio.down;
  return {32 * out.spacing * down, 16 * (out.firstInHalves * down - in.firstInHalves * up) + in.spacing * up,
          32 * in.spacing * up};
}

bool StaysInside(const Ratio& ratio, std::int64_t outSize, std::int64_t inSize) {
  return ratio.up >= 1 && ratio.down >= 1 && (outSize - 1) * ratio.down / ratio.up <= inSize - 1;
}

}  // namespace vidproc
