#include "passes/phase_position.h"

#include "passes/scale_job.h"

namespace vidproc {

PhasePosition LocatePhase(std::int64_t output, std::int32_t up, std::int32_t down) {
  const std::int64_t scaled = output * down;
  const std::int64_t source = scaled / up;
  const double sixteenths = static_cast<double>(scaled * kPhases) / up - static_cast<double>(source * kPhases);
  return {static_cast<std::int32_t>(source), static_cast<std::int32_t>(sixteenths)};
}

}  // namespace vidproc
