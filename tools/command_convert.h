// korvel convert: a headerless camera dump becomes a PNG file.
#pragma once

#include <CLI/CLI.hpp>

namespace korvel::tools {

void AddConvertCommand(CLI::App& app);

}  // namespace korvel::tools
