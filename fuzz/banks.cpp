// Filter design: whatever is asked for, a bank is refused whole or keeps what the kernels and their proofs count on.
#include <cstdlib>
#include <cstring>

#include "filters/automatic_filter.h"
#include "filters/deblocking_bank.h"
#include "filters/enhancement.h"
#include "filters/scaling_bank.h"
#include "targets.h"

namespace fuzzing {
namespace {

namespace filters = vidproc::filters;

int SumOf(const std::int16_t* phase, int taps) {
  int sum = 0;
  for (int t = 0; t < taps; ++t) sum += phase[t];
  return sum;
}

/// Sixteenths of a sample by which a phase moves the picture, times the phase's sum.
int MomentOf(const std::int16_t* phase, int index, int taps) {
  int moment = 0;
  for (int t = 0; t < taps; ++t) moment += phase[t] * (16 * (t - filters::CentreTap(taps)) - index);
  return moment;
}

void CheckScalingBank(const filters::ScalingDesign& filter, int taps, int bits, const filters::Bank& bank) {
  const bool isFixed = filter.kernel == filters::ScalingKernel::kFixedWidth;
  const int total = 1 << bits, slack = isFixed && filter.sharpening == 0 ? 1 : 0;
  for (int q = 0; q < filters::kPhases; ++q) {
    Require(std::abs(SumOf(bank[q], taps) - total) <= slack, "a phase has its sum");
    for (int t = taps; t < filters::kMaxTaps; ++t) Require(bank[q][t] == 0, "nothing lies behind the taps");
    if (isFixed) continue;
    const int most = filter.kernel == filters::ScalingKernel::kArea ? total * 16 / 2 : total * 16 / 64;
    Require(std::abs(MomentOf(bank[q], q, taps)) <= most, "a phase leaves the picture in its place");
    for (int t = 0; t < taps && q > 0; ++t) {
      Require(bank[q][t] == bank[16 - q][taps - 1 - t], "phases mirror each other");
    }
  }
  Require(isFixed || bank[0][taps - 1] == 0, "phase 0 leaves out its last tap");
}

void DesignScaling(Input& input) {
  filters::ScalingDesign filter;
  filter.kernel = static_cast<filters::ScalingKernel>(input.Between(0, 7));
  filter.fixedWidth = {input.OneIn(8) ? input.Any() : input.Byte() % 3, input.Any(), input.Any()};
  filter.sharpening = input.OneIn(8) ? input.Any() : input.Byte() % 17;
  const auto size = [&] { return input.OneIn(3) ? static_cast<int>(input.Any()) : 1 + input.Byte() * input.Byte(); };
  const int up = size(), down = size();
  const int taps = input.OneIn(8) ? static_cast<int>(input.Any()) : 4 << input.Between(0, 2);
  const int bits = input.OneIn(8) ? static_cast<int>(input.Any()) : 6 + input.Between(0, 1);
  filters::Bank bank;
  std::memset(bank, 0x55, sizeof(bank));
  if (filters::DesignScalingBank(filter, up, down, taps, bits, bank)) {
    CheckScalingBank(filter, taps, bits, bank);
  } else {
    for (const auto& phase : bank) Require(SumOf(phase, 16) == 16 * 0x5555, "a refused bank is left alone");
  }
}

void DesignOthers(Input& input) {
  const int taps = 2 * input.Between(1, 8), bits = input.Between(0, filters::kMaxPrecisionBits);
  filters::Bank bank = {}, enhanced = {};
  filters::DesignResamplingBank({input.Byte() % 3u, input.Any(), input.Any()}, taps, bits, bank);
  filters::EnhancementKernel kernel = {};
  const std::uint32_t type = input.Any() % 4, strength = input.Any();
  filters::BuildEnhancementKernel(type, strength, kernel);
  filters::FoldEnhancement(kernel, taps, 1 << bits, bank, enhanced);
  std::int16_t deblocking[filters::kPhases][filters::kDeblockingTaps] = {};
  const std::uint8_t level = input.Byte();
  const int deblockingTaps = 2 * input.Between(1, 4);
  filters::DesignDeblockingBank(level, deblockingTaps, bits, deblocking);
}

}  // namespace

void FuzzBanks(Input input) {
  for (int bank = 0; bank < 4 && !input.IsEmpty(); ++bank) input.OneIn(3) ? DesignOthers(input) : DesignScaling(input);
}

}  // namespace fuzzing
