// Streams whose results are kept in hashes.txt: every kernel, route, format and many settings, over frames that are
// drawn by integer arithmetic alone.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace golden {

struct Case {
  std::string name;
  bool mayImprove;  ///< depends on what is called automatic and may change in later versions
  std::function<std::uint64_t()> digest;
};

/// Of video_processor.h: kernels called directly, exported functions.
void AddObjectCases(std::vector<Case>& cases);
/// Of vidproc.h.
void AddInterfaceCases(std::vector<Case>& cases);

/// The n-th frame of a moving picture with edges, slopes and noise.
void PaintFrame(std::vector<std::uint8_t>& bytes, int rowBytes, int n);

}  // namespace golden
