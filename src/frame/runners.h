// One runner for each kind of work on a frame. Each reads the processor's fields as they stand, does nothing where they
// do not allow the work, and returns whether it ran. `workspace` is null before the first set-up.
#pragma once

#include "frame/scaler_traits.h"
#include "frame/source.h"
#include "frame/workspace.h"
#include "vidproc/video_processor.h"

namespace vidproc {

/// Deblocking levels up to this leave the picture as it is.
inline constexpr std::uint8_t kDeblockAbove = 20;

bool RunScaler(VideoProcessor& processor, Workspace* workspace, const ScalerTraits& traits, const Source& source);

/// The same-size temporal filter.
bool RunTemporalFilter(VideoProcessor& processor, const Workspace* workspace);

/// Deblocks the source frame in place.
bool RunDeblocking(VideoProcessor& processor, Workspace* workspace);

/// Deblocking where it is on, then the scaler, or the pass-through where there is nothing to scale or filter.
bool RunPostProcessor(VideoProcessor& processor, Workspace* workspace, const ScalerTraits& traits);

// --- Steps that runners share. Their callers have made the checks. ---

/// Checks that the scaler may run, and makes room for it where fields written by hand ask for more than set-up has
/// made.
bool PrepareToScale(const VideoProcessor& processor, Workspace* workspace, const ScalerTraits& traits);

/// What PrepareToScale has allowed: lists the banks, runs the kernel, updates the state that it leaves behind.
void Scale(VideoProcessor& processor, Workspace& workspace, const ScalerTraits& traits, const Source& source);

/// Lists nothing; SuitsDeblocking and CanDeblock hold.
void DeblockFrame(const VideoProcessor& processor, const Workspace& workspace);

/// Equal sizes, no filtering: the source frame is copied and dithered.
void PassThrough(VideoProcessor& processor, const BufferCapacities& held);

}  // namespace vidproc
