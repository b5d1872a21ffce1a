// Files that are not results yet, and their removal when a signal ends the process.
#pragma once

#include <string>

namespace vidproc::tool {

/// From here on SIGINT, SIGTERM, SIGHUP and SIGQUIT first remove the unfinished files and then end the process as they
/// always do. To be called before other threads start. A closed pipe and a file at its size limit become write errors.
void HandleSignals();

/// Makes a file, as mkostemp, that a signal will remove. Any thread.
/// @return its descriptor, or -1 and errno
int MakeUnfinishedFile(std::string& path);
/// Gives it its final name, or removes it where that is empty; then it is no longer unfinished.
/// @return 0 or an errno
int EndUnfinishedFile(const std::string& path, const std::string& finalPath);

}  // namespace vidproc::tool
