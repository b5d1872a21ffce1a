// The way of a frame: chosen once from role, geometry, switches and processor level, then run.
#pragma once

#include <cstdint>

#include "frame/planes_420.h"
#include "frame/scaler_traits.h"
#include "frame/source.h"
#include "frame/workspace.h"
#include "vidproc/video_processor.h"

namespace vidproc {

struct Route {
  enum class Work : std::uint8_t { kNone, kScaler, kTemporalFilter, kPostProcessor };
  Work work;
  const ScalerTraits* scaler = nullptr;  ///< of kScaler
};

/// @param plainScaler  non-zero: the plain scaler, whatever the role and the switches.
Route ChooseRoute(const VideoProcessor& processor, unsigned char plainScaler);

/// Runs the route's kernel or none; planes that no kernel reads as they are end up in the source frame either way.
/// @return whether a frame was made.
bool RunRoute(VideoProcessor& processor, Workspace* workspace, const Route& route, const Source& source);

/// Runs the route on planes as if they were a 2vuy frame: staged in scratchB, processed into scratchA, which the
/// processor's frame pointers keep pointing at, and split into the destination planes if a frame was made.
void RunRouteOnPlanes(VideoProcessor& processor, Workspace* workspace, const Route& route, const FramePair420& frames);

}  // namespace vidproc
