// The command line as data.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "levels/cpu_level.h"
#include "picture.h"

namespace vidproc::tool {

enum class Command { kPre, kPost, kNv12, kExposure, kFilters, kInfo };

/// The frames that pre, post and exposure or nv12 work on.
inline Layout LayoutOf(Command command) { return command == Command::kNv12 ? Layout::kNv12 : Layout::kUyvy; }

struct InputOptions {
  std::string path;  ///< empty: the synthetic scene; "-": standard input
  bool synthetic = false;
  Size syntheticSize{1280, 720};
  std::int64_t syntheticNoise = 100;  ///< percent of a webcam's
  std::string rawFormat;              ///< empty, "uyvy422" or "nv12"
  Size rawSize;
  std::int64_t frames = 0;  ///< 0: all
  std::int64_t seed = 1;
};

struct OutputOptions {
  std::string path;  ///< empty: none; "-": Y4M on standard output
  Size size;         ///< zero: the input's
  std::string comparePath;
  std::string statsPath;
  bool md5 = false;
  bool TakesStandardOutput() const { return path == "-" || comparePath == "-" || statsPath == "-"; }
};

struct ScalerOptions {
  std::int64_t enhance = 0;
  std::int64_t soften = 0;
  std::int64_t dither = 0;
};

struct Temporal {
  int strength = 80;
  int shift = 3;
};

struct LumaShift {
  int gain = 64;
  int offset = 0;
};

struct PreOptions {
  std::int64_t adaptive = 0;
  bool taps16 = false;
  bool motionSmoothing = false;
  std::optional<Temporal> temporal;
  std::optional<LumaShift> luma;
};

struct FiltersOptions {
  Size from;
  Size to;
  bool post = false;
};

struct Options {
  Command command = Command::kInfo;
  InputOptions input;
  OutputOptions output;
  ScalerOptions scaler;
  PreOptions pre;
  FiltersOptions filters;
  std::int64_t deblock = 0;  ///< 0 or 21..51
  bool json = false;         ///< exposure
  std::string plotPath;      ///< exposure, filters
  std::optional<Level> cpu;
};

/// Nothing when --help or --version has been answered. Throws ToolError with status 2 on bad usage.
std::optional<Options> ParseOptions(int argc, char** argv);

}  // namespace vidproc::tool
