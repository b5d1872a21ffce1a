#include "plan/phase_position.h"

#include "kernels/scale_job.h"

namespace vidproc {

PhasePosition LocatePhase(std::int64_t output, const Ratio& ratio) {
  const std::int64_t scaled = output * ratio.down;
  const std::int64_t source = scaled / ratio.up;
  const double sixteenths = static_cast<double>(scaled * kPhases) / ratio.up - static_cast<double>(source * kPhases);
  return {static_cast<std::int32_t>(source), static_cast<std::int32_t>(sixteenths)};
}

}  // namespace vidproc
