// korvel wb: the gains for a white balance.
#pragma once

#include <CLI/CLI.hpp>

namespace korvel::tools {

void AddWbCommand(CLI::App& app);

}  // namespace korvel::tools
