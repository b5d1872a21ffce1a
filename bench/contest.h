// A contest is one piece of work on one size of frame; contestants (kernels by level, other libraries) enter it under
// the name <work>/<size>/<contestant>. All contestants of a contest see the same frames in the same order.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "frames.h"

namespace bench {

struct Contest {
  std::string work;
  Size in;
  Size out;
  Format format = Format::kPacked422;
  /// Frames in turn. Few stay warm in a cache; kFromMemory takes so many, in and out, that none does.
  int frames = 1;
  /// The destination holds the source frame before each run, and is what the run works on.
  bool inPlace = false;
  /// Runs leave something in the destination.
  bool writes = true;

  static constexpr int kFromMemory = 0;
};

/// One frame's work.
using Run = std::function<void(const std::uint8_t* source, std::uint8_t* destination)>;

/// `make` sets the contestant up, untimed; an empty Run says that it cannot compete here. Programs differ in what they
/// do with an entry: time it, or count its instructions.
void Enter(const Contest& contest, const std::string& contestant, std::function<Run()> make);

/// This library, at every level that the machine has; `make` is called with that level in use.
void EnterLevels(const Contest& contest, const std::function<Run()>& make);

/// A copy of the frame, as the floor.
void EnterCopy(const Contest& contest);

std::string Name(const Contest& contest, const std::string& contestant);

/// --- The contests. ---

inline constexpr int kHistoryFrames = 4;
inline constexpr Size k360p{640, 360}, k720p{1280, 720}, k1080p{1920, 1080};

/// Plain scaler; `soften` is the kernels' softening level.
std::vector<Contest> ScaleContests(int soften);
/// Post-processor scaler with enhancement strength 1.
std::vector<Contest> PostScaleContests();
/// The same at equal sizes, where it only sharpens; other libraries' scalers would copy.
Contest PostSharpenContest();
/// Edge-preserving scalers with temporal blend: "adaptive", "adaptive16", "smoothing".
std::vector<Contest> AdaptiveContests(const std::string& work);
std::vector<Contest> TemporalContests();
Contest DeblockContest();
Contest Nv12Contest();
Contest NoiseContest();
/// Halving with frames from memory.
std::vector<Contest> MemoryContests();

/// The checked interface, planar 4:2:0 unless said: automatic filter, 4 + 8 or 8 + 16 taps.
std::vector<Contest> AutomaticContests(int taps);
/// The same in one step between NV12 frames.
Contest AutomaticNv12Contest();
/// A decoded picture enlarged for the screen.
Contest PostAutomaticContest();
/// Edge-preserving taps and history at the input's size: softening 10 with 4 + 8 taps, 100 with 8 + 16.
Contest DenoiseContest(int taps);
/// The former of them, then halving, in one call.
Contest DenoiseAndScaleContest();

}  // namespace bench
