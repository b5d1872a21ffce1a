// The exported set-up, execute and clean-up functions: flat argument lists over one VideoProcessor behind a handle.
#include <algorithm>
#include <initializer_list>

#include "filters/resampling_bank.h"
#include "frame/runners.h"
#include "kernels/kernel_traits.h"
#include "vidproc/video_processor.h"

namespace {

/// Arguments of a set-up, and what sets its use apart from the others.
struct SetUp {
  std::uint32_t inWidth, inHeight, inStride;
  std::uint32_t outWidth, outHeight, outStride;
  std::uint32_t enhanceStrength, ditherLevel, softenLevel;
  bool isPreProcessor;
  std::uint32_t windowKind;
  std::uint32_t precisionBits;
};

constexpr bool kPreProcessor = true;
constexpr bool kPostProcessor = false;
constexpr std::uint32_t kPreProcBits = vidproc::kPlainTraits.precisionBits;
constexpr std::uint32_t kPostProcBits = vidproc::kPostTraits.precisionBits;
constexpr std::uint32_t kLobes = 3;
constexpr std::uint32_t kSoftenLevel420 = 10;
constexpr short kNeutralGain = 128;
constexpr short kNeutralOffset = 0;

bool AnyZero(std::initializer_list<std::uint32_t> sizes) { return std::count(sizes.begin(), sizes.end(), 0u) != 0; }

VideoProcessor* CreateProcessor(void** handle, const SetUp& setUp) {
  const int softenLevel = static_cast<int>(setUp.softenLevel);
  try {
    auto* processor = new VideoProcessor(setUp.isPreProcessor, softenLevel);
    *handle = processor;
    return processor;
  } catch (...) {
    // kept: the processor of a second attempt is set up but never reaches the handle; it lives on unreachable.
  }
  return new VideoProcessor(setUp.isPreProcessor, softenLevel);
}

void Configure(VideoProcessor& processor, const SetUp& setUp) {
  processor.inWidth = setUp.inWidth;
  processor.inHeight = setUp.inHeight;
  processor.inStride = setUp.inStride;
  processor.outWidth = setUp.outWidth;
  processor.outHeight = setUp.outHeight;
  processor.outStride = setUp.outStride;
  processor.windowKind = setUp.windowKind;
  processor.lanczosLobes = kLobes;
  processor.SetEnhanceFilter(EnhanceLaplacian4, setUp.enhanceStrength, setUp.precisionBits, kNeutralGain,
                             kNeutralOffset);
  processor.ditherLevel = setUp.ditherLevel;
}

bool RunSetUp(void** handle, const SetUp& setUp) {
  if (handle == nullptr) return false;
  auto* processor = static_cast<VideoProcessor*>(*handle);
  if (processor == nullptr) {
    processor = CreateProcessor(handle, setUp);
  } else if (processor->NeedsInit(setUp.inWidth, setUp.inHeight, setUp.inStride, setUp.outWidth, setUp.outHeight,
                                  setUp.outStride, setUp.enhanceStrength, setUp.softenLevel) == 0) {
    processor->ditherLevel = setUp.ditherLevel;
    return true;
  } else {
    processor->softenLevel = setUp.softenLevel;
  }
  Configure(*processor, setUp);
  return true;
}

void CleanUp(void** handle) {
  if (handle == nullptr) return;
  delete static_cast<VideoProcessor*>(*handle);
  *handle = nullptr;
}

}  // namespace

int PreProcInit(void** handle, unsigned int inWidth, unsigned int inHeight, unsigned int inStride,
                unsigned int outWidth, unsigned int outHeight, unsigned int outStride, unsigned int enhanceStrength,
                unsigned int ditherLevel, unsigned int softenLevel) {
  if (AnyZero({inWidth, inHeight, inStride, outWidth, outHeight, outStride})) return 0;
  return RunSetUp(handle, {inWidth, inHeight, inStride, outWidth, outHeight, outStride, enhanceStrength, ditherLevel,
                           softenLevel, kPreProcessor, vidproc::filters::kGaussian, kPreProcBits});
}

int PostProcInit(void** handle, unsigned int inWidth, unsigned int inHeight, unsigned int inStride,
                 unsigned int outWidth, unsigned int outHeight, unsigned int outStride, unsigned int enhanceStrength,
                 unsigned int ditherLevel, unsigned int softenLevel) {
  if (AnyZero({inWidth, inHeight, inStride, outWidth, outHeight, outStride})) return 0;
  return RunSetUp(handle, {inWidth, inHeight, inStride, outWidth, outHeight, outStride, enhanceStrength, ditherLevel,
                           softenLevel, kPostProcessor, vidproc::filters::kTwoSincs, kPostProcBits});
}

bool VidProc420InterleavedInit(void** handle, unsigned int inWidth, unsigned int inHeight, unsigned int outWidth,
                               unsigned int outHeight) {
  if (AnyZero({inWidth, inHeight, outWidth, outHeight})) return false;
  return RunSetUp(handle, {inWidth, inHeight, 2 * inWidth, outWidth, outHeight, 2 * outWidth, 0, 0, kSoftenLevel420,
                           kPreProcessor, vidproc::filters::kGaussian, kPreProcBits});
}

void PreProcExecute(void* handle, unsigned char* source, unsigned char* destination, unsigned char adaptive,
                    unsigned char use16Taps, unsigned char motionSmoothing, unsigned char temporalStrength,
                    unsigned char temporalShift, short lumaGain, short lumaOffset) {
  if (handle == nullptr) return;
  auto& processor = *static_cast<VideoProcessor*>(handle);
  processor.SetUseSpatialMotionSmoothing(motionSmoothing);
  processor.SetTemporalFilter(temporalStrength, temporalShift);
  processor.SetAdaptive(adaptive);
  if (processor.GetTaps() != use16Taps) {
    // kept: the rebuild forgets the enhancement strength, so the next set-up with one rebuilds again.
    processor.SetTaps(use16Taps);
    processor.SetEnhanceFilter(EnhanceLaplacian4, 0, kPreProcBits, kNeutralGain, kNeutralOffset);
  }
  processor.InitLuminanceShiftTables(lumaGain, lumaOffset);
  processor.Go(source, destination, 0);
}

void PostProcExecute(void* handle, unsigned char* source, unsigned char* destination, unsigned char deblock,
                     short lumaGain, short lumaOffset) {
  if (handle == nullptr) return;
  auto& processor = *static_cast<VideoProcessor*>(handle);
  processor.InitLuminanceShiftTables(lumaGain, lumaOffset);
  // kept: a lower level never reaches the processor, so deblocking once on stays on.
  if (deblock > vidproc::kDeblockAbove) processor.InitDeblocker(deblock);
  processor.Go(source, destination, 0);
}

void VidProc420InterleavedExecute(void* handle, unsigned char* sourceLuma, unsigned char* sourceChroma,
                                  unsigned char* destinationLuma, unsigned char* destinationChroma,
                                  unsigned int sourceWidth, unsigned int sourceHeight, unsigned int sourceLumaStride,
                                  unsigned int sourceChromaStride, unsigned int destinationWidth,
                                  unsigned int destinationHeight, unsigned int destinationLumaStride,
                                  unsigned int destinationChromaStride, short lumaGain, short lumaOffset) {
  if (handle == nullptr) return;
  auto& processor = *static_cast<VideoProcessor*>(handle);
  processor.InitLuminanceShiftTables(lumaGain, lumaOffset);
  processor.Go(sourceLuma, sourceChroma, destinationLuma, destinationChroma, sourceWidth, sourceHeight,
               sourceLumaStride, sourceChromaStride, destinationWidth, destinationHeight, destinationLumaStride,
               destinationChromaStride, 1);
}

void PreProcCleanup(void** handle) { CleanUp(handle); }

void PostProcCleanup(void** handle) { CleanUp(handle); }

void VidProc420InterleavedCleanup(void** handle) { CleanUp(handle); }
