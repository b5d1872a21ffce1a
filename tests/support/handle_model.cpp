// The rules of set-up, stickiness and dispatch, in the order in which the exported functions apply them.
#include "support/handle_model.h"

#include <algorithm>
#include <iterator>
#include <limits>
#include <new>
#include <numeric>

#include "reference/filter_design.h"

namespace testing_support {
namespace {

std::uint64_t Larger(std::uint32_t a, std::uint32_t b) { return (std::uint64_t{std::max(a, b)} + 15) / 16 * 16; }

void Take(std::uint64_t& buffer, std::uint64_t bytes) {
  if (buffer != 0) return;  // buffers that exist keep their size
  if (bytes > std::numeric_limits<std::int32_t>::max()) throw std::bad_alloc();
  buffer = bytes;
}

/// Puts a bank where kernels read it.
template <std::size_t kTaps>
void FillLanes(const reference::FilterBank& bank, std::int16_t (&lanes)[16][kTaps][8]) {
  for (std::size_t phase = 0; phase < 16; ++phase) {
    for (std::size_t tap = 0; tap < kTaps; ++tap) {
      std::fill_n(lanes[phase][tap], 8, static_cast<std::int16_t>(bank[phase][tap]));
    }
  }
}

void SetRatio(std::uint32_t inSize, std::uint32_t outSize, std::int32_t& up, std::int32_t& down) {
  const std::uint32_t divisor = std::gcd(inSize, outSize);
  up = static_cast<std::int32_t>(outSize / divisor);
  down = static_cast<std::int32_t>(inSize / divisor);
}

const Kernel& KernelThatRuns(int (VideoProcessor::*run)()) {
  return *std::find_if(std::begin(kKernels), std::end(kKernels), [=](const Kernel& k) { return k.run == run; });
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
    TakeBuffers();
  }
  set.ditherLevel = given.ditherLevel;
  return true;
}

void HandleModel::TakeBuffers() {
  const std::uint64_t rows = Larger(set.inHeight, set.outHeight) + 32;
  const std::uint64_t rowBytes = 2 * Larger(set.inStride, set.outStride) + 64;
  Take(scratchBytes, 2 * rows * rowBytes);
  Take(historyBytes, rows * rowBytes);
}

void HandleModel::SwitchMotionSmoothing(std::uint8_t on) {
  motionSmoothing = on;
  if (on == 0) {
    smallBytes = largeBytes = 0;
    state.previousInput.clear();
    state.previousVertical.clear();
    return;
  }
  const std::uint64_t area = Larger(set.inHeight, set.outHeight) * Larger(set.inStride, set.outStride);
  Take(smallBytes, 4 * area);
  Take(largeBytes, 16 * area);
}

const Kernel& HandleModel::ChooseKernel() const {
  if (!preProcessor) return KernelThatRuns(&VideoProcessor::PostProcExecute);
  if (set.KeepsSize() && set.softenLevel == 0) return KernelThatRuns(&VideoProcessor::PreProcTemporalExecute);
  if (adaptive == 0) return KernelThatRuns(&VideoProcessor::PreProcExecute);
  if (use16Taps != 0) return KernelThatRuns(&VideoProcessor::PreProcAdaptive16TapTemporalExecute);
  if (motionSmoothing != 0) return KernelThatRuns(&VideoProcessor::PreProcAdaptiveMotionSmoothingExecute);
  return KernelThatRuns(&VideoProcessor::PreProcAdaptiveExecute);
}

bool HandleModel::Fits(const Kernel& kernel) const {
  if (set.inWidth < 2 || set.outWidth < 2) return false;
  if (set.inStride < 2 * set.inWidth || set.outStride < 2 * set.outWidth) return false;
  const std::uint64_t inRow = 2 * set.inWidth, outRow = 2 * set.outWidth, output = outRow * set.outHeight;
  const bool filters = !set.KeepsSize() || set.enhanceStrength != 0 || set.softenLevel != 0;
  const bool deblocks = deblockLevel > 20 && set.KeepsSize() && set.SourceIsPacked();
  if (kernel.family == Family::kPost && !filters && !deblocks) return true;
  if (kernel.temporal && output > historyBytes) return false;
  if (kernel.family == Family::kTemporal) return set.DestinationIsPacked() || output <= scratchBytes;
  const std::uint64_t edges = kernel.horizontalTaps == 16 ? 64 : 32;
  const std::uint64_t needs[] = {(set.inHeight + std::uint64_t{8}) * inRow, (inRow + edges) * set.outHeight * 2,
                                 2 * inRow * set.outHeight, output};
  if (*std::max_element(std::begin(needs), std::end(needs)) > scratchBytes) return false;
  return !kernel.motionGate || (inRow * std::max(set.inHeight, set.outHeight) <= smallBytes &&
                                2 * std::max(inRow, outRow) * set.outHeight <= largeBytes);
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
  SetRatio(set.inWidth, set.outWidth, p->horizontalUp, p->horizontalDown);
  SetRatio(set.inHeight, set.outHeight, p->verticalUp, p->verticalDown);
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

void HandleModel::Go(std::uint8_t* source, std::uint8_t* destination) {
  const Kernel& kernel = ChooseKernel();
  if (Fits(kernel)) RunReference(*MakeFields(), kernel, state, source, destination);
}

void HandleModel::PreProcess(const FrameArguments& given, std::uint8_t* source, std::uint8_t* destination) {
  SwitchMotionSmoothing(given.motionSmoothing);
  temporalStrength = std::min<std::uint8_t>(given.temporalStrength, 127);
  temporalShift = std::min<std::uint8_t>(given.temporalShift, 8);
  adaptive = given.adaptive;
  if (use16Taps != given.use16Taps) {
    use16Taps = given.use16Taps;
    set.enhanceStrength = 0;
    precisionBits = 7;
    TakeBuffers();
  }
  Go(source, destination);
}

void HandleModel::PostProcess(const FrameArguments& given, std::uint8_t* source, std::uint8_t* destination) {
  if (given.deblock > 20) deblockLevel = given.deblock;
  Go(source, destination);
}

void HandleModel::Process420(PlanePair& in, PlanePair& out) {
  const std::uint64_t planes[] = {std::uint64_t{2} * set.inWidth * set.inHeight,
                                  std::uint64_t{2} * set.outWidth * set.outHeight};
  if (std::max(planes[0], planes[1]) > scratchBytes || !Fits(kKernels[0])) return;
  const std::vector<std::uint8_t> packed = RunReference420(*MakeFields(), in, out);
  // The packed result lies where the temporal filter stages frames with padded rows.
  std::copy(packed.begin(), packed.end(), reference::GrowTo(state.staging, packed.size()));
}

}  // namespace testing_support
