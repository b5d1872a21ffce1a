// Smallest use of the library: halves one grey 2vuy frame with the pre-processor.
#include <vidproc/video_processor.h>

#include <cstdio>
#include <vector>

int main() {
  constexpr unsigned kInWidth = 1280, kInHeight = 720, kOutWidth = 640, kOutHeight = 360;
  std::vector<unsigned char> camera(kInWidth * 2 * kInHeight, 128);  // Cb, Y0, Cr, Y1, ...
  std::vector<unsigned char> resampled(kOutWidth * 2 * kOutHeight);

  void* handle = nullptr;
  if (PreProcInit(&handle, kInWidth, kInHeight, kInWidth * 2, kOutWidth, kOutHeight, kOutWidth * 2,
                  /*enhanceStrength=*/0, /*ditherLevel=*/0, /*softenLevel=*/10) == 0) {
    return 1;
  }
  PreProcExecute(handle, camera.data(), resampled.data(), /*adaptive=*/2, /*use16Taps=*/0, /*motionSmoothing=*/0,
                 /*temporalStrength=*/40, /*temporalShift=*/3, /*lumaGain=*/64, /*lumaOffset=*/0);
  PreProcCleanup(&handle);
  std::printf("a luma sample in the middle: %d\n", resampled[kOutWidth * kOutHeight + 1]);
}
