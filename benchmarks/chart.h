// Results as a picture.
#pragma once

#include <string>
#include <vector>

#include "benchmarks/table_reporter.h"

namespace korvel::benchmarks {

// Writes an SVG: for each operation and size a bar of our time, one of the fastest peer's, and a mark at the memory
// limit, in multiples of the slower of the two bars. Throws std::runtime_error if the file can't be written.
void WriteChart(const std::string& path, const std::vector<Result>& results);

}  // namespace korvel::benchmarks
