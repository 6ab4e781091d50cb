// Prints results as they come, as a Markdown table, and keeps them for a chart.
#pragma once

#include <benchmark/benchmark.h>

#include <optional>
#include <string>
#include <vector>

namespace korvel::benchmarks {

// An operation at a size. Times are of a pixel, or of a call where there are no pixels, in nanoseconds.
struct Result {
  std::string operation;
  std::string size;
  double time = 0;
  std::optional<double> limit;
  std::optional<double> peer;
};

class TableReporter : public benchmark::BenchmarkReporter {
 public:
  bool ReportContext(const Context& context) override;
  void ReportRuns(const std::vector<Run>& runs) override;
  void Finalize() override;

  // True once a benchmark has failed.
  bool HasFailure() const { return hasFailure_; }
  const std::vector<Result>& Results() const { return results_; }

 private:
  size_t nameWidth_ = 0;
  bool hasFailure_ = false;
  int goals_ = 0;
  int goalsMet_ = 0;
  std::vector<Result> results_;
};

}  // namespace korvel::benchmarks
