// The last of luma: gain and offset, then dither noise.
#pragma once

#include <vector>

#include "kernels/kernel_table.h"
#include "pipeline/pipeline.h"
#include "pipeline/stage.h"

namespace vidproc {

class LumaFinish : public Stage {
 public:
  /// @throws std::bad_alloc
  LumaFinish(Stage& input, const PipelineSettings& settings, const KernelTable& kernels);

  static bool IsNeeded(const PipelineSettings& settings) { return Shifts(settings) || settings.ditherLevel > 0; }
  void StartFrame() override;

 protected:
  void MakeRow(std::int32_t y, std::uint8_t* out) override;

 private:
  static bool Shifts(const PipelineSettings& settings) { return settings.lumaGain != 64 || settings.lumaOffset != 0; }
  void AddNoise(std::int32_t y, std::uint8_t* row);

  Stage& input;
  const KernelTable& kernels;
  const bool shifts;
  const std::int16_t gain;
  const std::int16_t offset;
  const std::int32_t seed;             ///< -1: from the clock
  std::vector<signed char> noiseTile;  ///< empty: no dither
  std::vector<std::uint16_t> blockPosition;
  std::uint32_t noiseState = 0;
};

}  // namespace vidproc
