// Deblocking tables: a Gaussian low-pass bank whose width is the deblocking level in sixteenths of a pixel.
#include <cmath>
#include <cstring>

#include "filters/phase_bank.h"
#include "vidproc/video_processor.h"

namespace {

constexpr int kTaps = 8;
constexpr int kPrecisionBits = 7;

}  // namespace

int VideoProcessor::InitDeblocker(unsigned char level) {
  deblockLevel = level;
  GetFilterDeblock(deblockHorizontalFilter, kTaps, kPrecisionBits, 0);
  std::memcpy(deblockVerticalFilter, deblockHorizontalFilter, sizeof(deblockVerticalFilter));
  vidproc::CopyToLanes(deblockVerticalFilter, kTaps, deblockVerticalFilterLanes);
  vidproc::CopyToLanes(deblockHorizontalFilter, kTaps, deblockHorizontalFilterLanes);
  return 0;
}

void VideoProcessor::GetFilterDeblock(short (*bank)[8], int taps, int precisionBits, int) {
  if (!vidproc::IsBankShape(taps, kTaps, precisionBits)) return;
  const double squaredWidth = deblockLevel * deblockLevel;
  const double peak = vidproc::PeakPosition(taps);
  vidproc::Prototype prototype;
  const auto kernel = [=](double i) { return std::exp(-((i - peak) * (i - peak) / squaredWidth)); };
  vidproc::SamplePrototype(taps, kernel, prototype);
  for (int phase = 0; phase < vidproc::kPhases; ++phase) {
    vidproc::DealPhase(prototype, phase, taps, precisionBits, false, bank[phase]);
  }
}
