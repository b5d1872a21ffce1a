// Debug listings of filter banks on standard output. Callers test debugPrint.
#pragma once

#include "vidproc/video_processor.h"

namespace vidproc {

/// Banks of the pre-processor's kernels of 8 and 4 taps, all phases.
void ListPreProcBanks(const VideoProcessor& processor);
/// Banks of the kernels of 16 and 8 taps, phase 0 only.
void List16TapBanks(const VideoProcessor& processor);
/// Banks of the post-processor's scaler, all phases.
void ListPostProcBanks(const VideoProcessor& processor);
/// Deblocking banks, all phases.
void ListDeblockBanks(const VideoProcessor& processor);

}  // namespace vidproc
