#include "plan/phase_position.h"

#include "kernels/scale_job.h"

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

bool StaysInside(const Ratio& ratio, std::int64_t outSize, std::int64_t inSize) {
  return ratio.up >= 1 && ratio.down >= 1 && (outSize - 1) * ratio.down / ratio.up <= inSize - 1;
}

}  // namespace vidproc
