// Frames of every format in guarded memory, seen by their samples.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "pipeline/frame_shape.h"
#include "support/frame_content.h"
#include "support/guarded_memory.h"

namespace testing_support {

/// The samples of a picture: luma, Cb, Cr, each row by row.
struct Samples {
  std::vector<std::uint8_t> component[3];
};

struct ComponentSize {
  int width, height;
};
ComponentSize SizeOf(const vidproc::FrameShape& shape, int component);
Samples Painted(const vidproc::FrameShape& shape, Content content, Random& random);
/// Where two pictures of a shape differ first; empty where they do not.
std::string FirstDifference(const vidproc::FrameShape& shape, const Samples& expected, const Samples& actual);

/// How a frame lies in memory.
struct Placement {
  int padding = 0;  ///< bytes between rows
  bool bottomUp = false;
  Flush flush = Flush::kEnd;
};

class FormatFrame {
 public:
  FormatFrame(const vidproc::FrameShape& shape, const Placement& placement, Random& random);

  void Put(const Samples& samples);
  /// A Cr that an odd width's tight packed row has no room for is that before it.
  Samples Get() const;
  vidproc::InputPlanes Input() const;
  vidproc::OutputPlanes Output() const;
  /// Names the first byte that is not a sample's and has changed since Put or construction; else empty.
  std::string FirstForeignWrite();

 private:
  struct Plane {
    std::unique_ptr<GuardedMemory> memory;
    int rowBytes = 0;
    int rows = 0;
    std::ptrdiff_t stride = 0;
    std::uint8_t* Row(std::uint8_t* image, int y) const;
  };
  std::uint8_t* Sample(int component, int x, int y) const;

  vidproc::FrameShape shape;
  std::vector<Plane> planes;
};

}  // namespace testing_support
