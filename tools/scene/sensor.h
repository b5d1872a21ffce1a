// From painted colours to video: limited-range BT.709 with chroma averaged for its place, light, and a sensor's noise.
#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "scene/rgb_picture.h"
#include "scene/scene.h"

namespace vidproc::scene {

class Sensor {
 public:
  Sensor(int width, int height, std::uint32_t seed, double noise);

  /// Takes over an area of the picture, which has the sensor's size.
  void Capture(const RgbPicture& picture, const Area& area);

  /// What has been captured, under `light` times the light, with the noise of frame `number`.
  void ReadOut(std::int64_t number, double light, Format format, std::uint8_t* bytes);

 private:
  using Row = std::vector<std::uint8_t>;
  struct Exposure;

  const std::uint8_t* Chroma(int which, int y) const;
  void CaptureLuma(const std::uint32_t* pixels, int y, int left, int right);
  void CaptureChroma(const std::uint32_t* pixels, int y, int first, int end);
  void ReadLuma(const Exposure& exposure, int y, std::uint8_t* row) const;
  /// Chroma of row y, or of rows y and y + 1 averaged.
  void ReadChroma(const Exposure& exposure, int which, int y, bool averaged, std::uint8_t* row) const;

  int width;
  int height;
  int pairs;  ///< chroma samples a row
  std::uint32_t seed;
  double noise;
  std::vector<std::uint8_t> luma;
  std::array<std::vector<std::uint8_t>, 2> chroma;  ///< Cb and Cr of every row (4:2:2)
  std::vector<std::int16_t> deviates;               ///< normal, of unit deviation in 256ths
};

}  // namespace vidproc::scene
