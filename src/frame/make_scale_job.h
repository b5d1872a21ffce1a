// From a processor's fields to the plain data that a scaling kernel works on.
#pragma once

#include "frame/scaler_traits.h"
#include "frame/source.h"
#include "frame/workspace.h"
#include "kernels/scale_job.h"
#include "vidproc/video_processor.h"

namespace vidproc {

/// Brings the workspace's plan up to date with the fields.
void UpdatePlan(const VideoProcessor& processor, Workspace& workspace, const ScalerTraits& traits);

/// Whether the scaler, by its plan, can read the planes as they are.
bool CanReadPlanes(const VideoProcessor& processor, const Workspace& workspace, const ScalerTraits& traits,
                   const Frame420& planes);

/// The job of the next frame, without noise. Copies the source where its rows overlap the destination or are shorter
/// than a kernel may read; planes are either `planes`, read as they are, or have been staged.
ScaleJob MakeScaleJob(const VideoProcessor& processor, const Workspace& workspace, const ScalerTraits& traits,
                      const Source& source, const SourcePlanes* planes);

/// Makes the previous input what the job compares with, in a place where vectors may read past the end of its rows.
void PlacePreviousInput(const VideoProcessor& processor, const Workspace& workspace, ScaleJob& job);

}  // namespace vidproc
