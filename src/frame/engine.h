// Between the processor object and the kernels: decides whether a kernel may run on the object's fields, prepares its
// job, runs it on the level in use, and updates the state that it leaves behind.
#pragma once

#include <optional>

#include "frame/bank_listing.h"
#include "frame/frame420.h"
#include "frame/workspace.h"
#include "noise/frame_noise.h"
#include "vidproc/video_processor.h"

namespace vidproc {

struct KernelTable;

/// Levels up to this leave the picture as it is.
inline constexpr std::uint8_t kDeblockAbove = 20;

/// What tells one scaling kernel from another, seen from outside; the plain scaler's unless stated.
struct ScalerTraits {
  void (*KernelTable::*kernel)(const ScaleJob&);
  int verticalTaps = 4;
  int horizontalTaps = 8;
  int precisionBits = 7;
  bool hasHistory = false;
  bool smoothsMotion = false;
  NoiseRule noise = NoiseRule::kSizedByInput;
  void (*listBanks)(const VideoProcessor&) = ListPreProcBanks;
};

/// 4:2:0 frames go through the plain scaler; and what it needs of the buffers, every kernel needs.
extern const ScalerTraits kPlainScaler;

/// Whether Go(plainScaler) runs the plain scaler whatever the role and the switches.
bool RunsPlainScaler(const VideoProcessor& processor, unsigned char plainScaler);

/// Has the object's private members.
struct Engine {
  static void PrepareWorkspace(VideoProcessor& processor);
  static void ReleaseWorkspace(VideoProcessor& processor) noexcept;

  static void RunScaler(VideoProcessor& processor, const ScalerTraits& traits);
  static void RunPostProcessor(VideoProcessor& processor, const ScalerTraits& traits);
  static void RunTemporalFilter(VideoProcessor& processor);
  static void RunDeblocking(VideoProcessor& processor);
  /// Whether the next frame goes through the byte row scaler of `traits`, which can read planes of these sizes
  /// directly.
  static bool ReadsPlanes(VideoProcessor& processor, const ScalerTraits& traits, const Frame420& planes);
  static int Go420(VideoProcessor& processor, const FramePair420& frames, unsigned char plainScaler);

 private:
  struct Rows {
    const std::uint8_t* start;
    std::ptrdiff_t stride;
  };

  static bool MayScale(VideoProcessor& processor, const ScalerTraits& traits);
  static bool FitsScaler(const VideoProcessor& processor, const ScalerTraits& traits);
  static bool FramesAreUsable(const VideoProcessor& processor);
  /// Bytes from `start` to the end of the working buffer that it lies in, if it lies in one.
  static std::optional<std::uint64_t> RoomInWorkingBuffer(const VideoProcessor& processor, const void* start);
  static const ScalePlan& UpdatePlan(VideoProcessor& processor, const ScalerTraits& traits);
  static ScaleJob MakeScaleJob(VideoProcessor& processor, const ScalerTraits& traits);
  static Rows SourceApart(VideoProcessor& processor);
  static Rows WithRoomPastRows(VideoProcessor& processor, const Rows& rows);
  static NoiseField* StartFrameNoise(VideoProcessor& processor, NoiseRule rule);
  /// Where a source that its destination overlaps is copied first: the scratch buffer that is not being written.
  static std::uint8_t* SparePlace(VideoProcessor& processor, const std::uint8_t* written, std::uint64_t bytes);
  /// The previous input, in a place where vectors may read past their end.
  static void PlacePreviousInput(VideoProcessor& processor, ScaleJob& job);
  static void PassThrough(VideoProcessor& processor);
  static bool ReserveWorkspace(VideoProcessor& processor);
};

}  // namespace vidproc
