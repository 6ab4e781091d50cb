// korvel formats: the catalogue of pixel formats.
#pragma once

#include <CLI/CLI.hpp>

namespace korvel::tools {

void AddFormatsCommand(CLI::App& app);

}  // namespace korvel::tools
