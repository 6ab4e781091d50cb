// Prints results as they come, as a Markdown table.
#pragma once

#include <benchmark/benchmark.h>

namespace korvel::benchmarks {

class TableReporter : public benchmark::BenchmarkReporter {
 public:
  bool ReportContext(const Context& context) override;
  void ReportRuns(const std::vector<Run>& runs) override;

  // True once a benchmark has failed.
  bool HasFailure() const { return hasFailure_; }

 private:
  size_t nameWidth_ = 0;
  bool hasFailure_ = false;
};

}  // namespace korvel::benchmarks
