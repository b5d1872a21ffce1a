// What each scaling kernel is made of, stated once: for its templates, and for the code that prepares its job.
#pragma once

namespace vidproc {

struct KernelTraits {
  int verticalTaps;
  int horizontalTaps;
  int precisionBits;           ///< of the banks
  bool adapts = false;         ///< taps lose weight as their sample differs from the centre's
  bool smoothsMotion = false;  ///< except where the picture moves: reads the previous input and vertical result
};

constexpr KernelTraits kPlainTraits = {.verticalTaps = 4, .horizontalTaps = 8, .precisionBits = 7};
constexpr KernelTraits kPostTraits = {.verticalTaps = 4, .horizontalTaps = 8, .precisionBits = 6};
constexpr KernelTraits kAdaptiveTraits = {.verticalTaps = 4, .horizontalTaps = 8, .precisionBits = 7, .adapts = true};
constexpr KernelTraits kMotionSmoothingTraits = {
    .verticalTaps = 4, .horizontalTaps = 8, .precisionBits = 7, .adapts = true, .smoothsMotion = true};
constexpr KernelTraits kAdaptive16TapTraits = {
    .verticalTaps = 8, .horizontalTaps = 16, .precisionBits = 7, .adapts = true};

}  // namespace vidproc
