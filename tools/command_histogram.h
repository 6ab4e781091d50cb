// korvel histogram: how often each value occurs, drawn.
#pragma once

#include <CLI/CLI.hpp>

namespace korvel::tools {

void AddHistogramCommand(CLI::App& app);

}  // namespace korvel::tools
