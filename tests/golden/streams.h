// Streams of frames through every kernel and route of both interfaces, which lie between pages that must not be
// touched. golden_test.cpp sums what they give; tests/safety runs them for what else has to hold.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "support/kernel_harness.h"
#include "support/md5.h"
#include "vidproc/vidproc.hpp"

namespace golden {

inline constexpr int kWholePages = -1;

/// How a frame's planes lie in memory.
struct Placement {
  int padding = 0;  ///< bytes behind the shortest row that is allowed; kWholePages: as many as guard every row
  bool bottomUp = false;
  testing_support::Flush flush = testing_support::Flush::kEnd;
  bool inPlace = false;  ///< the input frame is its own output
};

struct Rows {
  std::size_t Bytes() const { return (count - 1) * stride + bytes; }

  std::size_t count, bytes, stride;
};

/// A frame's bytes twice: in one block, which is painted and summed, and where it is processed.
class Frame {
 public:
  Frame(std::size_t bytes, int bytesOfRow) : block(bytes), rowBytes(bytesOfRow) {}

  /// Memory for a plane with an unreadable page right behind it or before it, and between rows that lie whole pages
  /// apart. The first row is at `offset` in the block, the next ones each `step` bytes on.
  std::uint8_t* AddPlane(const Rows& rows, testing_support::Flush flush, std::size_t offset, std::ptrdiff_t step);

  /// The n-th frame of a moving picture with edges, slopes and noise, drawn by integer arithmetic alone.
  void Paint(int n);
  void Load() const;
  /// Takes the processed bytes into the block. What lies between them has to be as it was.
  void Store();

  std::vector<std::uint8_t> block;

 private:
  struct Piece {
    std::uint8_t *memory, *expected;
    std::size_t offset, bytes;
  };
  int rowBytes;
  std::vector<std::unique_ptr<testing_support::GuardedMemory>> planes;
  std::vector<Piece> pieces;
};

struct Stream {
  void Paint(int n);
  /// One frame, after the set-up where none has succeeded yet.
  void Process();
  /// What the last frame gave.
  void AddTo(testing_support::Md5& sum);
  /// Of all its frames.
  std::string Sum();

  Frame in, out;
  /// What the library does. Both may throw where memory is out, and may be called again then.
  std::function<void()> setUp, run;
  bool isSetUp = false;
  bool changesInput = false;
  bool watchesExposure = false;
};

/// Of the processor object.
struct Settings {
  std::uint32_t softening = 0, strength = 0, dither = 0;
  std::uint8_t adaptive = 0, temporalStrength = 0, temporalShift = 0, deblock = 0;
  std::int16_t gain = 64, offset = 0;
};

enum class Use { kPre, kPre16Taps, kPreMotionSmoothing, kPost };

Stream StartKernel(const testing_support::Kernel& kernel, const testing_support::Geometry& g, const Settings& s,
                   testing_support::Flush flush);
/// The exported functions; taps and motion smoothing come with the frames.
Stream StartExported(Use use, const testing_support::Geometry& g, const Settings& s, testing_support::Flush flush);
Stream StartPlanes(const testing_support::Geometry& g, testing_support::Flush flush);

Stream StartChecked(const vidproc::PreOptions& options, const Placement& placement);
Stream StartChecked(const vidproc::PostOptions& options, const Placement& placement);
Stream StartChecked(const vidproc::ExposureOptions& options, const Placement& placement);

}  // namespace golden
