// The streams whose sums are kept in hashes.txt: every kernel, route, format and many settings.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "golden/streams.h"

namespace golden {

struct Case {
  std::string name;
  bool mayImprove;  ///< depends on what is called automatic and may change in later versions
  std::function<Stream()> start;
};

std::vector<Case> AllCases();

/// Of video_processor.h: kernels called directly, exported functions.
void AddObjectCases(std::vector<Case>& cases);
/// Of vidproc.h.
void AddInterfaceCases(std::vector<Case>& cases);

/// A case as it stands in the file.
std::string LineOf(const Case& item);
/// The file's lines.
std::vector<std::string> KeptLines();

}  // namespace golden
