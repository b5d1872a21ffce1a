// vidproc: the library from the command line.
#include <csignal>
#include <cstdio>
#include <exception>
#include <new>
#include <optional>

#include "commands.h"
#include "errors.h"
#include "ffmpeg_log.h"
#include "file_io.h"
#include "options.h"

namespace vidproc::tool {
namespace {

void Run(int argc, char** argv) {
  const std::optional<Options> options = ParseOptions(argc, argv);
  if (!options) return;
  if (options->cpu) CapLevel(*options->cpu);
  switch (options->command) {
    case Command::kPre:
    case Command::kPost:
    case Command::kNv12:
      return RunFrames(*options);
    case Command::kExposure:
      return RunExposure(*options);
    case Command::kFilters:
      return RunFilters(*options);
    case Command::kInfo:
      return RunInfo();
  }
}

}  // namespace
}  // namespace vidproc::tool

int main(int argc, char** argv) {
  using namespace vidproc::tool;
  std::signal(SIGPIPE, SIG_IGN);  // a closed pipe and a file at its size limit are write errors like any other
  std::signal(SIGXFSZ, SIG_IGN);
  CatchInterrupts();
  CaptureFfmpegLog();
  try {
    Run(argc, argv);
    FlushStandardOutput();
    return kSuccess;
  } catch (const ToolError& error) {
    std::fprintf(stderr, "vidproc: %s%s\n", error.what(), error.status == kUsage ? " (see --help)" : "");
    return error.status;
  } catch (const std::bad_alloc&) {
    std::fputs("vidproc: not enough memory for frames of this size\n", stderr);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "vidproc: %s\n", error.what());
  }
  return kFailure;
}
