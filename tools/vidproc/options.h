// The command line as data.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vidproc/vidproc.hpp>

#include "picture.h"

namespace vidproc::tool {

enum class Command { kPre, kPost, kObjectPre, kObjectPost, kObjectNv12, kExposure, kFilters, kBench, kInfo };
inline bool IsObject(Command command) { return command >= Command::kObjectPre && command <= Command::kObjectNv12; }
inline bool MakesFrames(Command command) { return command <= Command::kObjectNv12; }

struct InputOptions {
  std::string path;  ///< empty: the synthetic scene; "-": standard input
  bool synthetic = false;
  Size syntheticSize{1280, 720};
  std::int64_t syntheticNoise = 100;          ///< percent of a webcam's
  AVPixelFormat rawFormat = AV_PIX_FMT_NONE;  ///< other than none: frames without a container
  Size rawSize;
  std::string frameRate;  ///< of raw frames and pictures; empty: as the demuxer has it
  std::int64_t skip = 0;
  std::int64_t frames = 0;  ///< 0: all
  std::int64_t seed = 1;
};

enum class Fit { kShrink, kPad, kCrop, kStretch };

struct OutputOptions {
  std::string path;    ///< empty: none; "-": standard output
  std::string muxer;   ///< empty: by the ending
  std::string codec;   ///< empty: the muxer's
  std::string effort;  ///< of libx264 and libx265, one of their presets; empty: their default
  std::optional<double> crf;
  AVPixelFormat format = AV_PIX_FMT_NONE;  ///< none: what the codec takes and the input is nearest to
  Size size;                               ///< a side of 0: by the picture's shape; both: the input's
  Fit fit = Fit::kShrink;
  std::string comparePath;
  std::string statsPath;
  std::string md5Path;
};

/// Settings of the processor object, whose values are explained in its header.
struct ObjectOptions {
  int enhance = 0;
  int soften = 0;
  int dither = 0;
  int adaptive = 0;
  bool taps16 = false;
  bool motionSmoothing = false;
  int temporalStrength = 80;
  int temporalShift = 3;
  int deblock = 0;
};

struct Options {
  Command command = Command::kInfo;
  InputOptions input;
  OutputOptions output;
  vidproc::PreOptions pre{"webcam"};    ///< without formats and sizes
  vidproc::PostOptions post{"camera"};  ///< the same
  ObjectOptions object;
  int streams = 0;     ///< bench: on each core; 0: as many as it carries
  double seconds = 5;  ///< bench: of each count
  Size from;           ///< filters
  Size to;
  bool json = false;     ///< exposure
  std::string plotPath;  ///< exposure, filters
  bool quiet = false;
};

/// Nothing when --help, --version or a page has been asked for and printed. Throws ToolError with status 2 on bad
/// usage.
std::optional<Options> ParseOptions(int argc, char** argv);

}  // namespace vidproc::tool
