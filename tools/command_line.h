// korvel line: the values along a row or a column, drawn.
#pragma once

#include <CLI/CLI.hpp>

namespace korvel::tools {

void AddLineCommand(CLI::App& app);

}  // namespace korvel::tools
