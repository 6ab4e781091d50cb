// korvel view: a picture in the terminal.
#pragma once

#include <CLI/CLI.hpp>

namespace korvel::tools {

void AddViewCommand(CLI::App& app);

}  // namespace korvel::tools
