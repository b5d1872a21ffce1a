// A camera scene made here, for trying and measuring things without a clip: a presenter at a desk sways, talks and
// waves before a wall with a blind, a calendar, books and a clock, and a lamp goes out and comes back. A sensor's noise
// lies over it. Equal settings and frame numbers give equal bytes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

namespace vidproc::scene {

/// 8 bits, limited range, BT.709 matrix, chroma sited as in MPEG-2; planes follow each other and rows have no gaps.
enum class Format { kI420, kNv12, kUyvy };

struct Settings {
  int width = 1280;        ///< 2 to 16384
  int height = 720;        ///< 1 to 16384
  std::uint32_t seed = 1;  ///< of the noise
  double noise = 1;        ///< its amplitude, 0 (none) to 10; at 1 it is that of a webcam in a room
};

/// Chroma of odd sizes is rounded up.
std::size_t FrameBytes(Format format, int width, int height);

/// Not for several threads at once.
class Scene {
 public:
  static constexpr int kFramesPerSecond = 30;

  /// Throws std::invalid_argument for settings out of range, std::bad_alloc without memory.
  explicit Scene(const Settings& settings);
  ~Scene();
  Scene(const Scene&) = delete;
  Scene& operator=(const Scene&) = delete;

  /// Frame `number` >= 0, whatever was rendered before, into FrameBytes bytes. UYVY rows of odd widths end with a whole
  /// pair, whose second Y is 0.
  void Render(std::int64_t number, Format format, std::uint8_t* bytes);

 private:
  struct State;
  std::unique_ptr<State> state;
};

}  // namespace vidproc::scene
