// korvel correct: hot pixels, gain, colour matrix and gamma, as between a camera and a screen.
#pragma once

#include <CLI/CLI.hpp>

namespace korvel::tools {

void AddCorrectCommand(CLI::App& app);

}  // namespace korvel::tools
