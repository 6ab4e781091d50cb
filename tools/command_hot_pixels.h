// korvel hot-pixels: the hot pixels of a frame, listed and marked.
#pragma once

#include <CLI/CLI.hpp>

namespace korvel::tools {

void AddHotPixelsCommand(CLI::App& app);

}  // namespace korvel::tools
