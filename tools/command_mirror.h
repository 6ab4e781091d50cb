// korvel mirror: images the other way round.
#pragma once

#include <CLI/CLI.hpp>

namespace korvel::tools {

void AddMirrorCommand(CLI::App& app);

}  // namespace korvel::tools
