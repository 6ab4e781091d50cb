// korvel rotate: images turned by quarter turns.
#pragma once

#include <CLI/CLI.hpp>

namespace korvel::tools {

void AddRotateCommand(CLI::App& app);

}  // namespace korvel::tools
