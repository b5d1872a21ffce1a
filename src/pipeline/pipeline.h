// A stream's frames on their way from one format and size to another: denoised or deblocked, scaled, shifted in luma
// and dithered, row by row. Whoever hands settings and frames over has checked them.
#pragma once

#include <cstdint>
#include <memory>

#include "pipeline/frame_shape.h"

namespace vidproc {

// The values are those of the public enumerations.
enum class Alignment : std::uint8_t { kCentres, kCorners };
enum class ScalingFilter : std::uint8_t {
  kAutomatic,
  kBilinear,
  kCatmullRom,
  kMitchell,
  kLanczos,
  kArea,
  kGaussian,
  kHammingSinc,
  kTwoSincs
};
enum class Role : std::uint8_t { kPreProcessor, kPostProcessor };

struct ScalingSettings {
  Alignment alignment;
  ScalingFilter filter;
  std::int32_t taps;        ///< 8 (and 4 vertical) or 16 (and 8 vertical)
  std::int32_t softening;   ///< 0..255; of the kernels of fixed width, else not read
  std::int32_t lobes;       ///< 1..16; of the product of two sincs, else not read
  std::int32_t sharpening;  ///< 0..16
};

/// Nothing to do: edge 0, temporalStrength 0 and automatic 0.
struct DenoiseSettings {
  std::int32_t edge;              ///< 0 no spatial filter, 1..8
  std::int32_t softening;         ///< 0..255
  std::int32_t taps;              ///< 8 or 16
  std::int32_t temporalStrength;  ///< 0 no history, ..127
  std::int32_t temporalShift;     ///< 0..8
  bool smoothsMotion;
  std::int32_t passes = 1;     ///< 1..3, how often neighbours are averaged
  std::int32_t automatic = 0;  ///< 0 as set; else by the noise times this per cent, and only smoothsMotion counts
};

struct PipelineSettings {
  Role role;
  FrameShape input;
  FrameShape output;
  ScalingSettings scaling;
  DenoiseSettings denoise;    ///< nothing to do in a post-processor
  std::int32_t deblockLevel;  ///< 0 off, 21..255; 0 in a pre-processor
  std::int32_t lumaGain;      ///< -127..127, 64 is unity, never 0
  std::int32_t lumaOffset;    ///< -255..255
  std::int32_t ditherLevel;   ///< 0..12
  std::int32_t ditherSeed;    ///< -1 from the clock, 0..255
};

class Pipeline {
 public:
  /// Takes all memory that frames of these settings need. @throws std::bad_alloc
  explicit Pipeline(const PipelineSettings& settings);
  ~Pipeline();
  Pipeline(const Pipeline&) = delete;
  Pipeline& operator=(const Pipeline&) = delete;

  /// Continues the history of `replaced` where input size and chroma sampling agree and both keep one.
  void TakeHistory(Pipeline& replaced) noexcept;
  /// The next frame is the first one.
  void ForgetHistory() noexcept;
  /// Whether every frame comes out as it went in.
  bool PassesThrough() const noexcept;
  /// The noise's estimated standard deviation in hundredths of a luma level; 0 where denoising is not automatic.
  std::int32_t Noise() const noexcept;
  /// Input and output are the very same frame or share no byte. Takes no memory and no lock.
  void Process(const InputPlanes& input, const OutputPlanes& output) noexcept;

 private:
  struct Stages;
  std::unique_ptr<Stages> stages;
};

}  // namespace vidproc
