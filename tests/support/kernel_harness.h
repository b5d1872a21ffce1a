// Runs the kernels of the library at every available level against the reference kernels: the same settings, the same
// guarded frames, one processor for each level and form for a whole stream. Everything a frame leaves behind is
// compared: all memory around source and destination, history, first-frame flag and dither level.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdlib>
#include <iterator>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

#include "levels/cpu_level.h"
#include "reference/scaler.h"
#include "reference/stream_state.h"
#include "support/frame_content.h"
#include "support/guarded_memory.h"
#include "vidproc/video_processor.h"

namespace testing_support {

/// Every level that this machine and this build can run.
std::vector<vidproc::Level> AvailableLevels();

struct ProcessorDeleter {
  void operator()(VideoProcessor* processor) const {
    std::free(processor->ditherTable);  // the processor itself never frees it
    delete processor;
  }
};
using Processor = std::unique_ptr<VideoProcessor, ProcessorDeleter>;

enum class Family { kPre, kTemporal, kPost };

/// A kernel and what it is made of.
struct Kernel {
  const char* name = nullptr;
  int (VideoProcessor::*run)() = nullptr;
  Family family = Family::kPre;
  int horizontalTaps = 8;
  int verticalTaps = 4;
  bool adaptive = false;
  bool motionGate = false;
  bool temporal = false;
  bool shiftLuma = false;
  bool dithersResampled = true;
};

inline void PrintTo(const Kernel& kernel, std::ostream* out) { *out << kernel.name; }

inline constexpr Kernel kKernels[] = {
    {.name = "PlainScaler", .run = &VideoProcessor::PreProcExecute},
    {.name = "LumaShift", .run = &VideoProcessor::PreProcExecute_SSE2, .shiftLuma = true},
    {.name = "Adaptive", .run = &VideoProcessor::PreProcAdaptiveExecute, .adaptive = true, .temporal = true},
    {.name = "MotionSmoothing",
     .run = &VideoProcessor::PreProcAdaptiveMotionSmoothingExecute,
     .adaptive = true,
     .motionGate = true,
     .temporal = true},
    {.name = "Adaptive16TapTemporal",
     .run = &VideoProcessor::PreProcAdaptive16TapTemporalExecute,
     .horizontalTaps = 16,
     .verticalTaps = 8,
     .adaptive = true,
     .temporal = true},
    {.name = "Adaptive16Tap",
     .run = &VideoProcessor::PreProcAdaptive16TapExecute,
     .horizontalTaps = 16,
     .verticalTaps = 8,
     .adaptive = true},
    {.name = "Temporal",
     .run = &VideoProcessor::PreProcTemporalExecute,
     .family = Family::kTemporal,
     .horizontalTaps = 0,
     .verticalTaps = 0,
     .temporal = true,
     .dithersResampled = false},
    {.name = "PostScaler", .run = &VideoProcessor::PostProcExecute, .family = Family::kPost},
    {.name = "PostScalerUndithered",
     .run = &VideoProcessor::PostProcExecute_SSE2,
     .family = Family::kPost,
     .dithersResampled = false},
};

/// The entry of the table that runs this member.
constexpr const Kernel& KernelThatRuns(int (VideoProcessor::*run)()) {
  return *std::find_if(std::begin(kKernels), std::end(kKernels), [=](const Kernel& k) { return k.run == run; });
}

enum class BankKind { kDesigned, kModest, kSparse, kExtreme };
enum class Overlap { kApart, kSame, kAhead, kBehind };

struct Geometry {
  int inWidth, inHeight, outWidth, outHeight;
  int inPadding = 0, outPadding = 0;  ///< bytes from a row's end to the next row
};

/// What set-up is given.
struct Configuration {
  Geometry geometry;
  std::uint32_t softenLevel = 0;
  std::uint32_t enhanceStrength = 0;
  std::uint32_t windowKind = 2;
  std::uint8_t use16Taps = 0;
  BankKind banks = BankKind::kDesigned;
  std::uint32_t bankSeed = 0;
};

/// The reduced ratio of an axis; with `crops`, an axis that shrinks takes the source's corner as it is.
void SetRatio(std::uint32_t inSize, std::uint32_t outSize, bool crops, std::int32_t& up, std::int32_t& down);

/// Sets a processor up as the exported functions do, but for noise, which is off.
void SetUpProcessor(VideoProcessor& processor, const Configuration& configuration);
Processor MakeProcessor(bool preProcessor, const Configuration& configuration);

/// What may change from frame to frame.
struct FrameSettings {
  std::uint8_t adaptive = 1;
  std::uint8_t temporalStrength = 80;
  std::uint8_t temporalShift = 3;
  std::uint8_t motionSmoothing = 0;
  std::int16_t lumaGain = 64;
  std::int16_t lumaOffset = 0;
  std::uint32_t ditherLevel = 0;
  std::int32_t ditherSeed = 0;
  std::uint8_t deblockLevel = 0;
  std::uint8_t deblockTestPattern = 0;
  Content content = Content::kNoise;
  Overlap overlap = Overlap::kApart;
  Flush flush = Flush::kEnd;
  bool crops = false;  ///< ratios written by hand, see SetRatio
};

/// The reference's settings as a processor's fields stand.
reference::ScalerSettings ReadSettings(const VideoProcessor& processor, const Kernel& kernel);
reference::Noise ReadNoise(const VideoProcessor& processor, const Kernel& kernel);

/// Runs one frame with the settings as the fields stand; deblocking replaces the source.
/// @return the dither level that the frame leaves behind.
std::uint32_t RunReference(const VideoProcessor& processor, const Kernel& kernel, reference::StreamState& state,
                           std::uint8_t* source, std::uint8_t* destination);

/// What kernels may run on: a level, with its choice between forms or with the general ones only.
struct KernelForms {
  vidproc::Level level;
  bool generalOnly;

  std::string Name() const;
};
std::vector<KernelForms> AvailableForms();

/// Kernels run on these forms while it lives.
class FormsInUse {
 public:
  explicit FormsInUse(const KernelForms& forms);
  ~FormsInUse();
  FormsInUse(const FormsInUse&) = delete;
  FormsInUse& operator=(const FormsInUse&) = delete;
};

/// Runs a test once at each level.
class AtEveryLevel : public testing::TestWithParam<vidproc::Level> {
 protected:
  void SetUp() override { ASSERT_EQ(vidproc::CapLevel(GetParam()), GetParam()); }
  void TearDown() override { vidproc::CapLevel(vidproc::BestLevel()); }
};
#define RUN_AT_EVERY_LEVEL(Suite)                                                                \
  INSTANTIATE_TEST_SUITE_P(Levels, Suite, testing::ValuesIn(testing_support::AvailableLevels()), \
                           [](const auto& info) { return vidproc::LevelName(info.param); })

/// One stream: a processor for each level and form, and the reference's state beside them.
class Stream {
 public:
  explicit Stream(bool preProcessor);

  void Configure(const Configuration& newConfiguration);
  /// Off forgets what the motion gate remembered.
  void SwitchMotionSmoothing(std::uint8_t on);
  /// Runs one frame everywhere; false once anything differed (reported as a test failure with `label`).
  bool Run(const Kernel& kernel, const FrameSettings& settings, Random& random, const std::string& label);

 private:
  struct Frames;

  void Apply(const FrameSettings& settings);
  void CompareState(const Kernel& kernel, const VideoProcessor& processor, const std::string& where) const;

  VideoProcessor& First() const { return *processors.front(); }

  std::vector<KernelForms> forms;
  std::vector<Processor> processors;
  reference::StreamState state;
  std::uint32_t expectedDitherLevel = 0;
  Configuration configuration;
  std::vector<std::uint8_t> picture;  // packed source of the last frame
};

/// Settings drawn at random, weighted towards what differs between kernels.
FrameSettings DrawFrameSettings(const Kernel& kernel, Random& random);

}  // namespace testing_support
