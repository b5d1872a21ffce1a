// The object's kernels for direct calls.
#include "frame/runners.h"
#include "vidproc/video_processor.h"

using vidproc::Source;

int VideoProcessor::PreProcExecute() {
  RunScaler(*this, workspace, vidproc::kPlainScaler, Source(*this));
  return 0;
}

int VideoProcessor::PreProcExecute_SSE2() {
  RunScaler(*this, workspace, vidproc::kPlainWithLumaShift, Source(*this));
  return 0;
}

int VideoProcessor::PreProcAdaptiveExecute() {
  RunScaler(*this, workspace, vidproc::kAdaptive, Source(*this));
  return 0;
}

int VideoProcessor::PreProcAdaptiveMotionSmoothingExecute() {
  RunScaler(*this, workspace, vidproc::kMotionSmoothing, Source(*this));
  return 0;
}

int VideoProcessor::PreProcAdaptive16TapTemporalExecute() {
  RunScaler(*this, workspace, vidproc::kAdaptive16TapTemporal, Source(*this));
  return 0;
}

int VideoProcessor::PreProcAdaptive16TapExecute() {
  RunScaler(*this, workspace, vidproc::kAdaptive16Tap, Source(*this));
  return 0;
}

int VideoProcessor::PreProcTemporalExecute() {
  RunTemporalFilter(*this, workspace);
  return 0;
}

int VideoProcessor::PostProcExecute() {
  RunPostProcessor(*this, workspace, vidproc::kPost);
  return 0;
}

int VideoProcessor::PostProcExecute_SSE2() {
  RunPostProcessor(*this, workspace, vidproc::kPostWithoutNoise);
  return 0;
}

int VideoProcessor::Deblock8x8() {
  RunDeblocking(*this, workspace);
  return 0;
}
