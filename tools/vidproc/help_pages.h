// Manual page and shell completion from the description that --help is printed from.
#pragma once

#include <CLI/CLI.hpp>
#include <string>

namespace vidproc::tool {

/// Adds the hidden command that asks for one, `help man` or `help bash`.
void AddHelpPages(CLI::App& app, std::string& page);
void PrintHelpPage(const CLI::App& app, const std::string& page);

}  // namespace vidproc::tool
