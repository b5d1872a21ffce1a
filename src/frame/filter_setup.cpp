#include "frame/filter_setup.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "filters/deblocking_bank.h"
#include "filters/enhancement.h"
#include "filters/phase_bank.h"
#include "filters/resampling_bank.h"

namespace vidproc {
namespace {

/// kept: as many phases are enhanced as the horizontal bank has taps, so with 8 taps the upper half stays as designed.
void Enhance(const VideoProcessor& p, int taps, int horizontalTaps, std::int32_t total, filters::Bank& enhanced,
             filters::Bank& bank) {
  filters::FoldEnhancement(p.enhanceKernel, taps, total, bank, enhanced);
  std::memcpy(bank, enhanced, static_cast<std::size_t>(horizontalTaps) * sizeof(bank[0]));
}

}  // namespace

void SetUpFilters(VideoProcessor& p, EnhanceFilterTypes type, std::uint32_t strength, std::uint32_t precisionBits) {
  p.enhanceType = type;
  p.enhanceStrength = strength;
  filters::BuildEnhancementKernel(type, strength, p.enhanceKernel);

  p.FindUpAndDown(static_cast<int>(p.inWidth), static_cast<int>(p.outWidth), &p.horizontalUp, &p.horizontalDown);
  p.FindUpAndDown(static_cast<int>(p.inHeight), static_cast<int>(p.outHeight), &p.verticalUp, &p.verticalDown);

  const int horizontalTaps = p.use16Taps != 0 ? 16 : 8;
  const int verticalTaps = horizontalTaps / 2;
  const int bits = static_cast<int>(precisionBits);
  p.GetFilter(p.horizontalUp, p.horizontalDown, p.horizontalFilter, horizontalTaps, bits, 0);
  p.GetFilter(p.verticalUp, p.verticalDown, p.verticalFilter, verticalTaps, bits, 0);

  const auto total = static_cast<std::int32_t>(1u << (precisionBits % 32));
  if (p.enhanceHorizontal != 0) {
    Enhance(p, horizontalTaps, horizontalTaps, total, p.horizontalEnhancedFilter, p.horizontalFilter);
  }
  if (p.enhanceVertical != 0) {
    Enhance(p, verticalTaps, horizontalTaps, total, p.verticalEnhancedFilter, p.verticalFilter);
  }
  filters::CopyToLanes(p.verticalFilter, verticalTaps, p.verticalFilterLanes);
  filters::CopyToLanes(p.horizontalFilter, horizontalTaps, p.horizontalFilterLanes);
}

}  // namespace vidproc

namespace filters = vidproc::filters;

void VideoProcessor::FindUpAndDown(int inSize, int outSize, int* up, int* down) {
  // 64 bits: sizes beyond 2^31 arrive as negative numbers, and the most negative one has no 32-bit quotient by -1.
  std::int64_t divisor = std::max(inSize, outSize);
  for (std::int64_t rest = std::min(inSize, outSize); rest != 0;) {
    const std::int64_t remainder = divisor % rest;
    divisor = rest;
    rest = remainder;
  }
  *up = divisor == 0 ? 0 : static_cast<int>(outSize / divisor);
  *down = divisor == 0 ? 0 : static_cast<int>(inSize / divisor);
}

void VideoProcessor::GetFilter(int, int, short (*bank)[16], int taps, int precisionBits, int) {
  if (!filters::IsBankShape(taps, filters::kMaxTaps, precisionBits)) return;
  if (!filters::IsKernelKind(windowKind)) {
    std::puts("Wrong filter type!");
    std::exit(0);
  }
  filters::DesignResamplingBank({windowKind, softenLevel, lanczosLobes}, taps, precisionBits, bank);
}

void VideoProcessor::GetFilterDeblock(short (*bank)[8], int taps, int precisionBits, int) {
  if (!filters::IsBankShape(taps, filters::kDeblockingTaps, precisionBits)) return;
  filters::DesignDeblockingBank(deblockLevel, taps, precisionBits, bank);
}

int VideoProcessor::InitDeblocker(unsigned char level) {
  deblockLevel = level;
  GetFilterDeblock(deblockHorizontalFilter, filters::kDeblockingTaps, filters::kDeblockingBits, 0);
  std::memcpy(deblockVerticalFilter, deblockHorizontalFilter, sizeof(deblockVerticalFilter));
  filters::CopyToLanes(deblockVerticalFilter, filters::kDeblockingTaps, deblockVerticalFilterLanes);
  filters::CopyToLanes(deblockHorizontalFilter, filters::kDeblockingTaps, deblockHorizontalFilterLanes);
  return 0;
}
