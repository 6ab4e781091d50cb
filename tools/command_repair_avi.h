// korvel repair-avi: a whole video from a recording that nobody closed.
#pragma once

#include <CLI/CLI.hpp>

namespace korvel::tools {

void AddRepairAviCommand(CLI::App& app);

}  // namespace korvel::tools
