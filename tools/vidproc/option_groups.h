// Groups of options that several commands have.
#pragma once

#include <CLI/CLI.hpp>

#include "options.h"

namespace vidproc::tool {

void AddInput(CLI::App& command, InputOptions& input);
/// Of these only what the synthetic scene looks like.
void AddScene(CLI::App& command, InputOptions& input);
void AddOutput(CLI::App& command, OutputOptions& output);

void AddPreSettings(CLI::App& command, vidproc::PreOptions& pre);
void AddPostSettings(CLI::App& command, vidproc::PostOptions& post);
/// Of these only what decides on the filters.
void AddFilterSettings(CLI::App& command, vidproc::PreOptions& pre);

}  // namespace vidproc::tool
