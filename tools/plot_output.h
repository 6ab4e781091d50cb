// Where a plot goes: to the terminal or into a file, as a picture or a table.
#pragma once

#include <string>

#include "plot.h"

namespace korvel::tools {

// What -o takes, for the help of a command.
inline constexpr const char* kPlotHelp =
    "Without -o the plot is printed. A file ending in .svg, .png, .jpg, .jpeg or .bmp is a picture, and one ending in\n"
    ".csv a table.\n";

// Prints the plot if path is empty. place_name is the heading of a table's first column. Throws ToolError.
void OutputPlot(const Plot& plot, const std::string& path, const std::string& place_name);

}  // namespace korvel::tools
