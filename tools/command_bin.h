// korvel bin: blocks of pixels become one.
#pragma once

#include <CLI/CLI.hpp>

namespace korvel::tools {

void AddBinCommand(CLI::App& app);

}  // namespace korvel::tools
