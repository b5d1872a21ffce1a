#include "plan/phase_position.h"

#include "kernels/scale_job.h"

namespace vidproc {

PhasePosition LocatePhase(std::int64_t output, const Ratio& ratio) {
  const std::int64_t scaled = output * ratio.down;
  return {static_cast<std::int32_t>(scaled / ratio.up),
          static_cast<std::int32_t>(scaled % ratio.up * kPhases / ratio.up)};
}

}  // namespace vidproc
