#include "benchmarks/table_reporter.h"

#include <algorithm>
#include <iomanip>
#include <ostream>
#include <string>

#include "benchmarks/side_by_side.h"

namespace korvel::benchmarks {
namespace {

struct Column {
  const char* counter;
  int width;
  int decimals;
};

constexpr Column kColumns[] = {
    {kMilliseconds, 10, 3}, {kMegabytesPerSecond, 8, 0}, {kNanosecondsPerPixel, 8, 2},
    {kOverLimit, 8, 1},     {kOverPeer, 8, 2},
};

// Values below take more decimals.
constexpr double kSmall = 0.01;

}  // namespace

bool TableReporter::ReportContext(const Context& context) {
  PrintBasicContext(&GetErrorStream(), context);
  // As wide as the longest name, within reason.
  nameWidth_ = std::clamp<size_t>(context.name_field_width, 20, 56);
  std::ostream& out = GetOutputStream();
  out << "| " << std::left << std::setw(static_cast<int>(nameWidth_)) << "kernel, formats, size" << std::right;
  for (const Column& column : kColumns) out << " | " << std::setw(column.width) << column.counter;
  out << " |\n| " << std::string(nameWidth_, '-');
  for (const Column& column : kColumns) out << " | " << std::string(static_cast<size_t>(column.width) - 1, '-') << ':';
  out << " |\n";
  return true;
}

void TableReporter::ReportRuns(const std::vector<Run>& runs) {
  std::ostream& out = GetOutputStream();
  for (const Run& run : runs) {
    std::string name = run.run_name.function_name;
    if (!run.aggregate_name.empty()) name += " " + run.aggregate_name;
    out << "| " << std::left << std::setw(static_cast<int>(nameWidth_)) << name << std::right << std::fixed;
    if (run.error_occurred) {
      hasFailure_ = true;
      out << " | " << run.error_message << " |\n";
      continue;
    }
    for (const Column& column : kColumns) {
      out << " | " << std::setw(column.width);
      const auto counter = run.counters.find(column.counter);
      if (counter == run.counters.end()) {
        out << "";
        continue;
      }
      const double value = counter->second.value;
      out << std::setprecision(value < kSmall ? column.decimals + 3 : column.decimals) << value;
    }
    out << " |" << std::endl;
  }
}

}  // namespace korvel::benchmarks
