// korvel simulate: frames of a camera that is not there.
#pragma once

#include <CLI/CLI.hpp>

namespace korvel::tools {

void AddSimulateCommand(CLI::App& app);

}  // namespace korvel::tools
