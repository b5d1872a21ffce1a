// Deblocking tables: a Gaussian low-pass bank whose width is the deblocking level in sixteenths of a pixel.
#include <cmath>
#include <cstring>

#include "filters/phase_bank.h"
#include "vidproc/video_processor.h"

namespace {

namespace filters = vidproc::filters;

constexpr int kTaps = 8;
constexpr int kPrecisionBits = 7;

}  // namespace

int VideoProcessor::InitDeblocker(unsigned char level) {
  deblockLevel = level;
  GetFilterDeblock(deblockHorizontalFilter, kTaps, kPrecisionBits, 0);
  std::memcpy(deblockVerticalFilter, deblockHorizontalFilter, sizeof(deblockVerticalFilter));
  filters::CopyToLanes(deblockVerticalFilter, kTaps, deblockVerticalFilterLanes);
  filters::CopyToLanes(deblockHorizontalFilter, kTaps, deblockHorizontalFilterLanes);
  return 0;
}

void VideoProcessor::GetFilterDeblock(short (*bank)[8], int taps, int precisionBits, int) {
  if (!filters::IsBankShape(taps, kTaps, precisionBits)) return;
  const double squaredWidth = deblockLevel * deblockLevel;
  const double peak = filters::PeakPosition(taps);
  filters::Prototype prototype;
  const auto kernel = [=](double i) { return std::exp(-((i - peak) * (i - peak) / squaredWidth)); };
  filters::SamplePrototype(taps, kernel, prototype);
  for (int phase = 0; phase < filters::kPhases; ++phase) {
    filters::DealPhase(prototype, phase, taps, precisionBits, false, bank[phase]);
  }
}
