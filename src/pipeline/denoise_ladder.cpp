// The steps are found with scripts/report, which measures what they do to bits and picture; docs/presets.md has its
// figures. Weights reach as far as about four deviations, as long as the filter's reach of 16 allows it; what is
// stronger takes several passes, each of which leaves less noise to the next.
#include "pipeline/denoise_ladder.h"

#include <iterator>

namespace vidproc {
namespace {

struct Step {
  std::int32_t deviation;  ///< from here on, in hundredths of a luma level
  std::int32_t edge, softening, passes, temporalStrength, temporalShift;
};

constexpr Step kSteps[] = {{0, 0, 0, 1, 0, 0},      {80, 6, 160, 1, 80, 3},  {120, 5, 160, 1, 80, 3},
                           {155, 4, 160, 1, 80, 3}, {180, 3, 160, 1, 80, 3}, {240, 2, 255, 1, 80, 2},
                           {360, 1, 180, 1, 80, 2}, {550, 1, 255, 2, 90, 0}, {750, 1, 255, 3, 100, 0}};
constexpr std::int32_t kTaps = 16;

}  // namespace

std::vector<DenoiseSettings> DenoiseLadder(const DenoiseSettings& asked) {
  if (asked.automatic == 0) return {asked};
  std::vector<DenoiseSettings> ladder;
  for (const Step& step : kSteps) {
    ladder.push_back({step.edge, step.softening, kTaps, step.temporalStrength, step.temporalShift, asked.smoothsMotion,
                      step.passes, asked.automatic});
  }
  return ladder;
}

std::size_t LadderStep(std::int64_t deviation) {
  std::size_t step = std::size(kSteps) - 1;
  while (step > 0 && deviation < kSteps[step].deviation) --step;
  return step;
}

}  // namespace vidproc
