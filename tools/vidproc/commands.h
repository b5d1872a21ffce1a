// What each subcommand does. All throw ToolError.
#pragma once

#include <string>

#include "options.h"

namespace vidproc::tool {

/// pre, post and object: every frame through the library and out.
void RunFrames(const Options& options);
void RunExposure(const Options& options);
void RunFilters(const Options& options);
void RunBench(const Options& options);
void RunInfo();

/// The instruction sets that this machine and this build have, separated by spaces.
std::string LevelsHere();

}  // namespace vidproc::tool
