// korvel convert: images from one file type or pixel format to another.
#pragma once

#include <CLI/CLI.hpp>

namespace korvel::tools {

void AddConvertCommand(CLI::App& app);

}  // namespace korvel::tools
