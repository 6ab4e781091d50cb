#include "benchmarks/table_reporter.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <ostream>

#include "benchmarks/side_by_side.h"

namespace korvel::benchmarks {
namespace {

constexpr const char* kTitles[] = {"ns/px", "limit", "peer", "x limit", "goal", "x peer", "goal", "met"};
constexpr int kWidth = 7;

std::optional<double> ValueOf(const benchmark::UserCounters& counters, const char* name) {
  const auto found = counters.find(name);
  return found == counters.end() ? std::nullopt : std::optional<double>(found->second.value);
}

// Three digits, as more are noise.
std::string Time(std::optional<double> value) {
  if (!value) return "";
  std::array<char, 32> text{};
  const int decimals = std::max(0, 2 - static_cast<int>(std::floor(std::log10(std::max(*value, 1e-3)))));
  std::snprintf(text.data(), text.size(), "%.*f", std::min(decimals, 3), *value);
  return text.data();
}

std::string Multiple(std::optional<double> value) {
  if (!value) return "";
  std::array<char, 32> text{};
  std::snprintf(text.data(), text.size(), "%.2f", *value);
  return text.data();
}

void PrintCell(std::ostream& out, const std::string& text, int width) {
  out << " | " << std::string(static_cast<size_t>(std::max(0, width - static_cast<int>(text.size()))), ' ') << text;
}

}  // namespace

bool TableReporter::ReportContext(const Context& context) {
  PrintBasicContext(&GetErrorStream(), context);
  // As wide as the longest name, within reason.
  nameWidth_ = std::clamp<size_t>(context.name_field_width, 20, 56);
  std::ostream& out = GetOutputStream();
  const std::string first = "operation, formats, size";
  out << "| " << first << std::string(nameWidth_ - std::min(nameWidth_, first.size()), ' ');
  for (const char* const title : kTitles) PrintCell(out, title, kWidth);
  out << " | fastest peer, its result |\n| " << std::string(nameWidth_, '-');
  for (size_t i = 0; i < std::size(kTitles); ++i) out << " | " << std::string(kWidth - 1, '-') << ':';
  out << " | --- |" << std::endl;
  return true;
}

void TableReporter::ReportRuns(const std::vector<Run>& runs) {
  std::ostream& out = GetOutputStream();
  for (const Run& run : runs) {
    const std::string& name = run.run_name.function_name;
    out << "| " << name << std::string(nameWidth_ - std::min(nameWidth_, name.size()), ' ');
    if (run.error_occurred) {
      hasFailure_ = true;
      out << " | " << run.error_message << " |" << std::endl;
      continue;
    }
    const auto valueOf = [&](const char* counterName) { return ValueOf(run.counters, counterName); };
    const double pixels = valueOf(counter::kPixels).value_or(1);
    const auto perPixel = [&](const char* counterName) {
      const std::optional<double> value = valueOf(counterName);
      return value ? std::optional(*value / pixels) : std::nullopt;
    };
    const size_t slash = name.rfind('/');
    const Result result{.operation = name.substr(0, slash),
                        .size = name.substr(slash + 1),
                        .time = perPixel(counter::kTime).value_or(0),
                        .limit = perPixel(counter::kLimit),
                        .peer = perPixel(counter::kPeer)};
    results_.push_back(result);
    PrintCell(out, Time(result.time), kWidth);
    PrintCell(out, Time(result.limit), kWidth);
    PrintCell(out, Time(result.peer), kWidth);
    PrintCell(out, Multiple(valueOf(counter::kOverLimit)), kWidth);
    PrintCell(out, Multiple(valueOf(counter::kGoalOverLimit)), kWidth);
    PrintCell(out, Multiple(valueOf(counter::kOverPeer)), kWidth);
    PrintCell(out, Multiple(valueOf(counter::kGoalOverPeer)), kWidth);
    const std::optional<double> isMet = valueOf(counter::kGoalIsMet);
    if (isMet) {
      ++goals_;
      goalsMet_ += *isMet != 0;
    }
    PrintCell(out, !isMet ? "" : *isMet != 0 ? "yes" : "no", kWidth);
    out << " | " << run.report_label << " |" << std::endl;
  }
}

void TableReporter::Finalize() {
  if (goals_ != 0) GetOutputStream() << "\nGoals met: " << goalsMet_ << " of " << goals_ << ".\n";
}

}  // namespace korvel::benchmarks
