// Plots as text, for terminals.
#pragma once

#include <cstddef>
#include <iosfwd>

#include "plot.h"

namespace korvel::tools {

// A small plot for each series, of block characters in UTF-8, as wide as this many columns allow; in_colour adds the
// escapes for colours.
void PrintPlot(std::ostream& out, const Plot& plot, size_t columns, bool in_colour);

}  // namespace korvel::tools
