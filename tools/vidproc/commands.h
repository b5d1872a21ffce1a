// What each subcommand does. All throw ToolError.
#pragma once

#include "options.h"

namespace vidproc::tool {

/// pre, post and nv12: every frame through the library and out.
void RunFrames(const Options& options);
void RunExposure(const Options& options);
void RunFilters(const Options& options);
void RunInfo();

}  // namespace vidproc::tool
