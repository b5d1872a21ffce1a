// Auto-exposure service: tells when the exposure of a stream of 2vuy frames has drifted and when it has settled again.
//
// Every frame is compared with a stored reference, block by block. Where a block shows the same scene (its mean within
// 0.9 to 1.1 of the reference's, and well correlated) the frame gives its brightness, elsewhere the reference does, so
// that moving objects do not count. A state machine with hysteresis follows the mean of one sample per block: warm-up,
// then settling and watching in turn. When few blocks have matched for a while the scene is new and the reference is
// replaced.
#include "exposure/auto_exposure.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <limits>

#include "kernels/block_statistics.h"
#include "kernels/kernel_table.h"
#include "vidproc/video_processor.h"

namespace vidproc {
namespace {

constexpr int kDriftConfirmed = 1;
constexpr int kSettled = 0;
constexpr int kNothingNew = -1;

constexpr int kWarmUpFrames = 21;
constexpr int kFirstLevel = 100;

constexpr int kSettlingTolerance = 9;
constexpr int kStableFrames = 8;
constexpr int kDriftTolerance = 27;
constexpr int kMostDriftFrames = 8;
constexpr int kSceneShare = 5;  // a fifth of the blocks must match
constexpr int kMostSceneChangeFrames = 5;

// --- Memory ---

std::size_t FrameBytes(const AutoExposureState& state) {
  return static_cast<std::size_t>(state.width) * static_cast<std::size_t>(state.height) * 2;
}

int BlockColumns(const AutoExposureState& state) { return state.width / kExposureBlockSize; }
/// None where the frame is narrower than a block.
int BlockRows(const AutoExposureState& state) {
  return BlockColumns(state) == 0 ? 0 : state.height / kExposureBlockSize;
}

template <class Entry>
bool Allocate(std::size_t count, Entry*& entries) {
  // At least one: malloc may give null for none.
  entries = static_cast<Entry*>(std::malloc(std::max<std::size_t>(count, 1) * sizeof(Entry)));
  return entries != nullptr;
}

/// An entry per block behind the pointers to the rows, all in one piece.
template <class Entry>
bool AllocateTable(const AutoExposureState& state, Entry**& rows) {
  const auto rowCount = static_cast<std::size_t>(BlockRows(state));
  const auto columns = static_cast<std::size_t>(BlockColumns(state));
  void* memory = std::malloc(std::max<std::size_t>(rowCount, 1) * (sizeof(Entry*) + columns * sizeof(Entry)));
  rows = static_cast<Entry**>(memory);
  if (rows == nullptr) return false;
  static_assert(alignof(Entry) <= alignof(Entry*));
  auto* const entries = reinterpret_cast<Entry*>(rows + rowCount);
  for (std::size_t by = 0; by < rowCount; ++by) rows[by] = entries + by * columns;
  return true;
}

bool AllocateBuffers(AutoExposureState& state) {
  const std::size_t blocks = static_cast<std::size_t>(BlockColumns(state)) * static_cast<std::size_t>(BlockRows(state));
  return Allocate(FrameBytes(state), state.referenceFrame) && Allocate(FrameBytes(state), state.spareFrame) &&
         Allocate(blocks * kExposureBlockSamples, state.referenceLuma) && Allocate(blocks, state.referenceBlocks) &&
         AllocateTable(state, state.blockCorrelation) && AllocateTable(state, state.blockMeanRatio) &&
         AllocateTable(state, state.blockFlat);
}

void Release(AutoExposureState* state) {
  std::free(state->referenceFrame);
  std::free(state->spareFrame);
  std::free(state->referenceLuma);
  std::free(state->referenceBlocks);
  std::free(state->blockCorrelation);
  std::free(state->blockMeanRatio);
  std::free(state->blockFlat);
  std::free(state);
}

// --- Measuring ---

struct FrameMeasure {
  int matchingBlocks;
  int brightness;
};

BlockRow BlockRowOf(const AutoExposureState& state, const std::uint8_t* frame, int by) {
  const std::ptrdiff_t pitch = std::ptrdiff_t{2} * state.width;
  const std::ptrdiff_t firstBlock = std::ptrdiff_t{by} * BlockColumns(state);
  return {frame + by * kExposureBlockSize * pitch, pitch, BlockColumns(state),
          state.referenceLuma + firstBlock * kExposureBlockSamples, state.referenceBlocks + firstBlock};
}

/// Rows and columns beyond the last whole block do not count as blocks, but do in the mean.
FrameMeasure MeasureFrame(const AutoExposureState& state, const std::uint8_t* frame) {
  BlockTotals totals;
  for (int by = 0; by < BlockRows(state); ++by) {
    Kernels().measureBlocks(BlockRowOf(state, frame, by),
                            {state.blockCorrelation[by], state.blockMeanRatio[by], state.blockFlat[by]}, totals);
  }
  const std::uint32_t brightness = totals.firstSamples * 256;  // wraps in very large frames
  return {totals.matching, static_cast<std::int32_t>(brightness) / (state.width * state.height)};
}

void Remember(AutoExposureState& state, const std::uint8_t* frame) {
  std::memcpy(state.referenceFrame, frame, FrameBytes(state));
  for (int by = 0; by < BlockRows(state); ++by) Kernels().rememberBlocks(BlockRowOf(state, frame, by));
}

// --- The state machine ---

bool IsNear(int level, int brightness, int tolerance) { return std::abs(level - brightness) <= tolerance; }

int Settle(AutoExposureState& state, const std::uint8_t* frame, int brightness) {
  if (IsNear(state.candidateLevel, brightness, kSettlingTolerance)) {
    ++state.stableFrames;
    state.settledLevel += brightness;
  } else {
    state.stableFrames = 0;
    state.settledLevel = 0;
    state.candidateLevel = brightness;
  }
  Remember(state, frame);
  if (state.stableFrames < kStableFrames) return kNothingNew;
  state.settling = 0;
  state.settledLevel = (state.settledLevel + kStableFrames / 2) >> 3;
  state.driftFrames = 0;
  return kSettled;
}

int WatchDrift(AutoExposureState& state, const std::uint8_t* frame, int brightness) {
  state.candidateLevel = brightness;
  const bool isNear = IsNear(state.settledLevel, brightness, kDriftTolerance);
  state.driftFrames = std::max(state.driftFrames + (isNear ? -1 : 1), 0);
  if (state.driftFrames <= kMostDriftFrames) return kNothingNew;
  state.settling = 1;
  state.stableFrames = 0;
  state.settledLevel = 0;
  Remember(state, frame);
  return kDriftConfirmed;
}

void WatchScene(AutoExposureState& state, const std::uint8_t* frame, int matchingBlocks) {
  const bool isKnown = matchingBlocks >= state.width * state.height / kExposureBlockSamples / kSceneShare;
  state.sceneChangeFrames = std::max(state.sceneChangeFrames + (isKnown ? -1 : 1), 0);
  if (state.sceneChangeFrames <= kMostSceneChangeFrames) return;
  state.sceneChangeFrames = 0;
  Remember(state, frame);
}

int WatchFrame(AutoExposureState& state, const std::uint8_t* frame) {
  if (state.frameCount == 0) {
    state.currentLevel = kFirstLevel;
    state.candidateLevel = kFirstLevel;
    Remember(state, frame);
  }
  if (state.frameCount < kWarmUpFrames) return kNothingNew;
  const FrameMeasure measure = MeasureFrame(state, frame);
  const int result =
      state.settling == 1 ? Settle(state, frame, measure.brightness) : WatchDrift(state, frame, measure.brightness);
  WatchScene(state, frame, measure.matchingBlocks);
  state.currentLevel = measure.brightness;
  return result;
}

}  // namespace

void RestartExposure(AutoExposureState& state) {
  state.frameCount = 0;
  state.settling = 1;
  state.stableFrames = 0;
  state.settledLevel = 0;
  state.driftFrames = 0;
  state.sceneChangeFrames = 0;
}

}  // namespace vidproc

using vidproc::AutoExposureState;

extern "C" {

void VidProcAdjustAutoExposureInit(void** handle, int width, int height, int param) {
  constexpr std::int64_t kMostFrameBytes = std::numeric_limits<std::int32_t>::max();
  if (handle == nullptr || *handle != nullptr) return;
  if (width < 1 || height < 1 || std::int64_t{width} * height > kMostFrameBytes / 2) return;
  auto* state = static_cast<AutoExposureState*>(std::malloc(sizeof(AutoExposureState)));
  if (state == nullptr) return;
  *state = {.width = width, .height = height, .initParam = param};
  if (vidproc::AllocateBuffers(*state)) {
    *handle = state;
  } else {
    vidproc::Release(state);
  }
}

int VidProcAdjustAutoExposure(void* state, unsigned char* frame) {
  if (state == nullptr || frame == nullptr) return vidproc::kNothingNew;
  auto& watcher = *static_cast<AutoExposureState*>(state);
  const int result = vidproc::WatchFrame(watcher, frame);
  // The count matters only until the warm-up is over; it stops rather than wrap.
  if (watcher.frameCount < std::numeric_limits<std::int32_t>::max()) ++watcher.frameCount;
  return result;
}

void VidProcAdjustAutoExposureCleanup(void** handle) {
  if (handle == nullptr) return;
  if (*handle != nullptr) vidproc::Release(static_cast<AutoExposureState*>(*handle));
  *handle = nullptr;
}

}  // extern "C"
