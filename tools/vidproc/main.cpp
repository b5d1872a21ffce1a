// vidproc: the library from the command line.
#include <exception>
#include <new>
#include <optional>

#include "commands.h"
#include "errors.h"
#include "ffmpeg_log.h"
#include "file_io.h"
#include "options.h"
#include "signals.h"

namespace vidproc::tool {
namespace {

void Run(int argc, char** argv) {
  const std::optional<Options> options = ParseOptions(argc, argv);
  if (!options) return;
  if (options->quiet) SilenceNotes();
  switch (options->command) {
    case Command::kExposure:
      return RunExposure(*options);
    case Command::kFilters:
      return RunFilters(*options);
    case Command::kBench:
      return RunBench(*options);
    case Command::kInfo:
      return RunInfo();
    default:
      return RunFrames(*options);
  }
}

}  // namespace
}  // namespace vidproc::tool

int main(int argc, char** argv) {
  using namespace vidproc::tool;
  HandleSignals();
  CaptureFfmpegLog();
  try {
    Run(argc, argv);
    FlushStandardOutput();
    return kSuccess;
  } catch (const ToolError& error) {
    PrintError(std::string(error.what()) + (error.status == kUsage ? " (see --help)" : ""));
    return error.status;
  } catch (const std::bad_alloc&) {
    PrintError("not enough memory for frames of this size");
  } catch (const std::exception& error) {
    PrintError(error.what());
  }
  return kFailure;
}
