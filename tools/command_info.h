// korvel info: what image files hold.
#pragma once

#include <CLI/CLI.hpp>

namespace korvel::tools {

void AddInfoCommand(CLI::App& app);

}  // namespace korvel::tools
