#include "pipeline/luma_finish.h"

#include <ctime>

#include "kernels/noise_register.h"
#include "noise/frame_noise.h"

namespace vidproc {

LumaFinish::LumaFinish(Stage& input, const PipelineSettings& settings, const KernelTable& kernels)
    : Stage(input.Shape()),
      input(input),
      kernels(kernels),
      shifts(Shifts(settings)),
      gain(static_cast<std::int16_t>(settings.lumaGain)),
      offset(static_cast<std::int16_t>(settings.lumaOffset)),
      seed(settings.ditherSeed) {
  input.Hold(1);
  if (settings.ditherLevel == 0) return;
  noiseTile.resize(kNoiseTileCells);
  MakeLumaNoiseTile(static_cast<unsigned>(settings.ditherLevel), noiseTile.data());
  blockPosition.resize(NoiseBlocksPerRow(static_cast<std::uint32_t>(Shape().width)));
}

void LumaFinish::StartFrame() {
  Stage::StartFrame();
  if (noiseTile.empty()) return;
  noiseState = FirstNoiseState(seed < 0 ? static_cast<unsigned>(std::clock()) : static_cast<unsigned>(seed));
}

void LumaFinish::MakeRow(std::int32_t y, std::uint8_t* out) {
  input.WriteRow(y, out);
  if (shifts) kernels.shiftLumaRow(out, Shape().width, gain, offset, out);
  if (!noiseTile.empty()) AddNoise(y, out);
}

/// Rows come in ascending order: a band's positions are drawn when its first row is reached.
void LumaFinish::AddNoise(std::int32_t y, std::uint8_t* row) {
  const std::int32_t rowOfBand = y % kNoiseBlockSize;
  if (rowOfBand == 0) {
    DrawNoiseBand(noiseState, blockPosition.data(), static_cast<std::uint32_t>(blockPosition.size()));
  }
  kernels.addNoiseToLumaRow(noiseTile.data() + rowOfBand * kNoiseTileSize, blockPosition.data(), row, Shape().width);
}

}  // namespace vidproc
