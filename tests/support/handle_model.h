// What a handle of the exported functions does with its arguments, written plainly: which settings stay, which kernel
// serves a frame, and which frames are made for certain. The frames themselves come from the reference kernels.
#pragma once

#include <algorithm>
#include <cstdint>

#include "reference/stream_state.h"
#include "support/kernel_harness.h"
#include "support/planes_420.h"

namespace testing_support {

/// Rows and bytes from row to row.
struct Extent {
  std::uint32_t rows = 0, stride = 0;
  bool FitsInto(const Extent& room) const { return rows <= room.rows && stride <= room.stride; }
};

enum class Use { kPreProcessing, kPostProcessing, kInterleaved420 };

struct SetUpArguments {
  std::uint32_t inWidth, inHeight, inStride, outWidth, outHeight, outStride;
  std::uint32_t enhanceStrength, ditherLevel, softenLevel;

  static SetUpArguments For420(std::uint32_t inWidth, std::uint32_t inHeight, std::uint32_t outWidth,
                               std::uint32_t outHeight) {
    return {inWidth, inHeight, 2 * inWidth, outWidth, outHeight, 2 * outWidth, 0, 0, 10};
  }
  bool operator==(const SetUpArguments&) const = default;
  Extent Largest() const { return {std::max(inHeight, outHeight), std::max(inStride, outStride)}; }
  bool KeepsSize() const { return inWidth == outWidth && inHeight == outHeight; }
  bool SourceIsPacked() const { return inStride == 2 * inWidth; }
  bool DestinationIsPacked() const { return outStride == 2 * outWidth; }
};

/// Arguments of a frame; `deblock` is the post-processor's, the luma settings are both's, the rest the pre-processor's.
struct FrameArguments {
  std::uint8_t adaptive, use16Taps, motionSmoothing, temporalStrength, temporalShift;
  std::int16_t lumaGain, lumaOffset;
  std::uint8_t deblock;
};

class HandleModel {
 public:
  /// False where a size is 0.
  bool SetUp(Use use, const SetUpArguments& given);
  void CleanUp() { *this = HandleModel(); }

  /// The expected memory of frames. Those that outgrow the buffers of the first set-up may be made or left alone:
  /// `isMade` says which it was, and is held against what is certain.
  void PreProcess(const FrameArguments& given, bool isMade, std::uint8_t* source, std::uint8_t* destination);
  void PostProcess(const FrameArguments& given, bool isMade, std::uint8_t* source, std::uint8_t* destination);
  void Process420(bool isMade, PlanePair& in, PlanePair& out);

  bool Exists() const { return exists; }
  bool IsFirstFrame() const { return state.firstFrame; }
  const SetUpArguments& Current() const { return set; }

  std::int32_t ditherSeed = -1;
  std::uint8_t deblockTestPattern = 1;

 private:
  void SwitchMotionSmoothing(std::uint8_t on);
  const Kernel& ChooseKernel() const;
  void ExpectMade(const Kernel& kernel, bool isMade) const;
  void Go(bool isMade, std::uint8_t* source, std::uint8_t* destination);
  Processor MakeFields() const;

  bool exists = false;
  bool preProcessor = true;
  SetUpArguments set = {};
  std::uint32_t windowKind = 0;
  int precisionBits = 0;
  std::uint8_t adaptive = 0, use16Taps = 0, motionSmoothing = 0;
  std::uint8_t temporalStrength = 0, temporalShift = 0;
  std::uint8_t deblockLevel = 0;
  reference::StreamState state;
  Extent room, smoothingRoom;  ///< what the buffers were taken for
};

}  // namespace testing_support
