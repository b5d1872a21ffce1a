// The rules of set-up, stickiness and dispatch, in the order in which the exported functions apply them.
#include "support/handle_model.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>

#include "reference/filter_design.h"

namespace testing_support {
namespace {

/// Puts a bank where kernels read it.
template <std::size_t kTaps>
void FillLanes(const reference::FilterBank& bank, std::int16_t (&lanes)[16][kTaps][8]) {
  for (std::size_t phase = 0; phase < 16; ++phase) {
    for (std::size_t tap = 0; tap < kTaps; ++tap) {
      std::fill_n(lanes[phase][tap], 8, static_cast<std::int16_t>(bank[phase][tap]));
    }
  }
}

}  // namespace

bool HandleModel::SetUp(Use use, const SetUpArguments& given) {
  const std::uint32_t sizes[] = {given.inWidth,  given.inHeight,  given.inStride,
                                 given.outWidth, given.outHeight, given.outStride};
  if (std::count(std::begin(sizes), std::end(sizes), 0u) > 0) return false;
  SetUpArguments unchanged = given;
  unchanged.ditherLevel = set.ditherLevel;
  const bool isNew = !exists || !(unchanged == set);
  if (!exists) {  // the role is that of the first set-up
    exists = true;
    preProcessor = use != Use::kPostProcessing;
    unchanged.ditherLevel = 9;
  }
  if (isNew) {
    set = unchanged;
    windowKind = use == Use::kPostProcessing ? 0 : 2;
    precisionBits = use == Use::kPostProcessing ? 6 : 7;
    if (room.rows == 0) room = set.Largest();
  }
  set.ditherLevel = given.ditherLevel;
  return true;
}

void HandleModel::SwitchMotionSmoothing(std::uint8_t on) {
  motionSmoothing = on;
  if (on == 0) {
    smoothingRoom = {};
    state.previousInput.clear();
    state.previousVertical.clear();
  } else if (smoothingRoom.rows == 0) {
    smoothingRoom = set.Largest();
  }
}

const Kernel& HandleModel::ChooseKernel() const {
  if (!preProcessor) return KernelThatRuns(&VideoProcessor::PostProcExecute);
  if (set.KeepsSize() && set.softenLevel == 0) return KernelThatRuns(&VideoProcessor::PreProcTemporalExecute);
  if (adaptive == 0) return KernelThatRuns(&VideoProcessor::PreProcExecute);
  if (use16Taps != 0) return KernelThatRuns(&VideoProcessor::PreProcAdaptive16TapTemporalExecute);
  if (motionSmoothing != 0) return KernelThatRuns(&VideoProcessor::PreProcAdaptiveMotionSmoothingExecute);
  return KernelThatRuns(&VideoProcessor::PreProcAdaptiveExecute);
}

void HandleModel::ExpectMade(const Kernel& kernel, bool isMade) const {
  if (set.inWidth < 2 || set.outWidth < 2 || set.inStride < 2 * set.inWidth || set.outStride < 2 * set.outWidth) {
    EXPECT_FALSE(isMade);
  } else if (set.Largest().FitsInto(room) && (!kernel.motionGate || set.Largest().FitsInto(smoothingRoom))) {
    EXPECT_TRUE(isMade);
  }
}

/// An object with the fields that a frame's kernel is to read.
Processor HandleModel::MakeFields() const {
  Processor p(new VideoProcessor(preProcessor, 0));
  p->inWidth = set.inWidth;
  p->inHeight = set.inHeight;
  p->inStride = set.inStride;
  p->outWidth = set.outWidth;
  p->outHeight = set.outHeight;
  p->outStride = set.outStride;
  SetRatio(set.inWidth, set.outWidth, false, p->horizontalUp, p->horizontalDown);
  SetRatio(set.inHeight, set.outHeight, false, p->verticalUp, p->verticalDown);
  const int taps = use16Taps != 0 ? 16 : 8, strength = static_cast<int>(set.enhanceStrength);
  reference::ResamplingDesign design = {windowKind, set.softenLevel, 3, taps, precisionBits};
  FillLanes(reference::MakeScalerBank(design, strength, taps), p->horizontalFilterLanes);
  design.taps = taps / 2;
  FillLanes(reference::MakeScalerBank(design, strength, taps), p->verticalFilterLanes);
  p->enhanceStrength = set.enhanceStrength;
  p->softenLevel = set.softenLevel;
  p->PostProcDitherNoiseLUTCreation(&p->ditherTable);
  p->adaptive = adaptive;
  p->temporalStrength = temporalStrength;
  p->temporalShift = temporalShift;
  p->ditherLevel = set.ditherLevel;
  p->ditherSeed = ditherSeed;
  p->deblockLevel = deblockLevel;
  const reference::FilterBank deblocking = reference::MakeDeblockingBank(deblockLevel, 8, 7);
  FillLanes(deblocking, p->deblockHorizontalFilterLanes);
  FillLanes(deblocking, p->deblockVerticalFilterLanes);
  p->deblockTestPattern = deblockTestPattern;
  return p;
}

void HandleModel::Go(bool isMade, std::uint8_t* source, std::uint8_t* destination) {
  const Kernel& kernel = ChooseKernel();
  ExpectMade(kernel, isMade);
  if (isMade) RunReference(*MakeFields(), kernel, state, source, destination);
}

void HandleModel::PreProcess(const FrameArguments& given, bool isMade, std::uint8_t* source,
                             std::uint8_t* destination) {
  SwitchMotionSmoothing(given.motionSmoothing);
  temporalStrength = std::min<std::uint8_t>(given.temporalStrength, 127);
  temporalShift = std::min<std::uint8_t>(given.temporalShift, 8);
  adaptive = given.adaptive;
  if (use16Taps != given.use16Taps) {
    use16Taps = given.use16Taps;
    set.enhanceStrength = 0;
    precisionBits = 7;
  }
  Go(isMade, source, destination);
}

void HandleModel::PostProcess(const FrameArguments& given, bool isMade, std::uint8_t* source,
                              std::uint8_t* destination) {
  if (given.deblock > 20) deblockLevel = given.deblock;
  Go(isMade, source, destination);
}

void HandleModel::Process420(bool isMade, PlanePair& in, PlanePair& out) {
  ExpectMade(kKernels[0], isMade);
  if (!isMade) return;
  const std::vector<std::uint8_t> packed = RunReference420(*MakeFields(), in, out);
  // The packed result lies where the temporal filter stages frames with padded rows.
  std::copy(packed.begin(), packed.end(), reference::GrowTo(state.staging, packed.size()));
}

}  // namespace testing_support
