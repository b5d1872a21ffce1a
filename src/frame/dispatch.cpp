// The forms of Go: every frame takes one route, which is chosen once.
#include "frame/route.h"
#include "vidproc/video_processor.h"

int VideoProcessor::Go(unsigned char plainScaler) {
  RunRoute(*this, workspace, vidproc::ChooseRoute(*this, plainScaler), vidproc::Source(*this));
  return 0;
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
  RunRouteOnPlanes(*this, workspace, vidproc::ChooseRoute(*this, plainScaler), frames);
  return 0;
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
