// korvel inspect: what an unknown dump may be.
#pragma once

#include <CLI/CLI.hpp>

namespace korvel::tools {

void AddInspectCommand(CLI::App& app);

}  // namespace korvel::tools
