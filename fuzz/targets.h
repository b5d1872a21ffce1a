// The fuzzers. Each takes any input, and throws std::logic_error where the library breaks a promise; what it breaks in
// memory, the sanitizers see. Those of calls tell by a digest what came of them, so that two runs can be compared.
#pragma once

#include <cstdint>

#include "input.h"

namespace fuzzing {

/// kRepeatable leaves out what may differ from run to run: noise by the clock, frames in working buffers.
enum class Run { kAnything, kRepeatable };

/// The exported functions and the public fields of two objects.
std::uint64_t RunObjects(Input& input, Run run);
/// Pre- and post-processors and exposure watchers of vidproc.h.
std::uint64_t RunInterface(Input& input, Run run);

void FuzzObject(Input input);
void FuzzInterface(Input input);
/// The same calls at every level, with general forms too.
void FuzzLevels(Input input);
/// The same picture in two formats and layouts.
void FuzzFormats(Input input);
/// Filter design.
void FuzzBanks(Input input);
/// The exposure watchers of both interfaces beside each other.
void FuzzExposure(Input input);
/// The tool's options and readers; only where the tool is built.
void FuzzTool(Input input);

struct Target {
  const char* name;
  void (*run)(Input input);
};
inline constexpr Target kTargets[] = {
#ifdef VIDPROC_FUZZES_TOOL
    {"tool", FuzzTool},
#endif
    {"object", FuzzObject},   {"interface", FuzzInterface}, {"levels", FuzzLevels},
    {"formats", FuzzFormats}, {"banks", FuzzBanks},         {"exposure", FuzzExposure}};

}  // namespace fuzzing
