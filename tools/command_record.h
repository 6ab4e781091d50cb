// korvel record: a video of simulated frames or of image files.
#pragma once

#include <CLI/CLI.hpp>

namespace korvel::tools {

void AddRecordCommand(CLI::App& app);

}  // namespace korvel::tools
