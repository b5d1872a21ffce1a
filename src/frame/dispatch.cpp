// Frame dispatch: every frame enters through a form of Go, which runs exactly one kernel or none.
#include "frame/engine.h"
#include "frame/frame420.h"
#include "vidproc/video_processor.h"

namespace vidproc {

bool RunsPlainScaler(const VideoProcessor& processor, unsigned char plainScaler) {
  return plainScaler != 0 && processor.cpuLevel >= 0;
}

}  // namespace vidproc

int VideoProcessor::Go(unsigned char plainScaler) {
  if (cpuLevel < 0) return 0;
  if (vidproc::RunsPlainScaler(*this, plainScaler)) return PreProcExecute();
  if (isPreProcessor == 0) return PostProcExecute();
  const bool hasSse41 = cpuLevel >= 1;
  const bool sameGeometry = outWidth == inWidth && outHeight == inHeight && softenLevel == 0;
  // kept: nothing stands in for the temporal filter below SSE4.1; the destination stays as it was.
  if (sameGeometry) return hasSse41 ? PreProcTemporalExecute() : 0;
  if (adaptive == 0 || !hasSse41) return PreProcExecute();
  if (use16Taps != 0) return PreProcAdaptive16TapTemporalExecute();
  if (spatialMotionSmoothing != 0) return PreProcAdaptiveMotionSmoothingExecute();
  return PreProcAdaptiveExecute();
}

int VideoProcessor::Go(unsigned char* source, unsigned char* destination, unsigned char plainScaler) {
  srcFrame = source;
  dstFrame = destination;
  return Go(plainScaler);
}

int VideoProcessor::Go(unsigned char* sourceLuma, unsigned char* sourceChroma, unsigned char* destinationLuma,
                       unsigned char* destinationChroma, unsigned int sourceWidth, unsigned int sourceHeight,
                       unsigned int sourceLumaStride, unsigned int sourceChromaStride, unsigned int destinationWidth,
                       unsigned int destinationHeight, unsigned int destinationLumaStride,
                       unsigned int destinationChromaStride, unsigned char plainScaler) {
  const vidproc::FramePair420 frames = {
      {sourceLuma, sourceChroma, sourceWidth, sourceHeight, sourceLumaStride, sourceChromaStride},
      {destinationLuma, destinationChroma, destinationWidth, destinationHeight, destinationLumaStride,
       destinationChromaStride}};
  return vidproc::Engine::Go420(*this, frames, plainScaler);
}

int VideoProcessor::Go(char* inName, char* outName) {
  SetFiles(inName, outName);
  return Go(0);
}

int VideoProcessor::Go(char* inName, char* outName, unsigned char flag0, unsigned char flag1,
                       unsigned char foldHorizontal, unsigned char foldVertical, unsigned int value) {
  SetFiles(inName, outName);
  optionFlag0 = flag0;
  optionFlag1 = flag1;
  enhanceHorizontal = foldHorizontal;
  enhanceVertical = foldVertical;
  optionValue = value;
  return Go(0);
}
