// Measures the exported functions beside the memory and beside other libraries; see docs/performance.md.

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <exception>
#include <fstream>
#include <string>

#include "benchmarks/chart.h"
#include "benchmarks/peers.h"
#include "benchmarks/registration.h"
#include "benchmarks/table_reporter.h"

namespace korvel::benchmarks {
namespace {

// Options of this program, which are taken out before Google Benchmark looks at the others.
struct Options {
  bool isSmall = false;   // --small: all operations on small pictures, to see that they run
  std::string chartPath;  // --chart=FILE
};

Options TakeOptions(int& argc, char** argv) {
  Options options;
  constexpr const char* kChart = "--chart=";
  char** const end = std::remove_if(argv + 1, argv + argc, [&](const char* argument) {
    const bool isSmall = std::strcmp(argument, "--small") == 0;
    const bool isChart = std::strncmp(argument, kChart, std::strlen(kChart)) == 0;
    options.isSmall = options.isSmall || isSmall;
    if (isChart) options.chartPath = argument + std::strlen(kChart);
    return isSmall || isChart;
  });
  argc = static_cast<int>(end - argv);
  return options;
}

std::string ProcessorName() {
  std::ifstream file("/proc/cpuinfo");
  for (std::string line; std::getline(file, line);) {
    if (line.starts_with("model name")) return line.substr(std::min(line.size(), line.find(':') + 2));
  }
  return "unknown";
}

int Run(int argc, char** argv) {
  const Options options = TakeOptions(argc, argv);
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 2;
  benchmark::AddCustomContext("processor", ProcessorName());
  if (const std::string missing = MissingPeers(); !missing.empty()) {
    benchmark::AddCustomContext("missing peers", missing);
  }
  const FrameSizes sizes = options.isSmall ? FrameSizes(&kSmallSize, 1) : FrameSizes(kFrameSizes);
  RegisterConversions(sizes);
  RegisterCorrections(sizes);
  RegisterGeometry(sizes);
  RegisterMeasure(sizes);
  RegisterImageFiles(sizes);
  RegisterVideo(sizes);
  RegisterSmallWork();
  TableReporter reporter;
  const size_t count = benchmark::RunSpecifiedBenchmarks(&reporter);
  if (!options.chartPath.empty()) WriteChart(options.chartPath, reporter.Results());
  return count == 0 || reporter.HasFailure() ? 1 : 0;
}

}  // namespace
}  // namespace korvel::benchmarks

int main(int argc, char** argv) {
  try {
    return korvel::benchmarks::Run(argc, argv);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "korvel_benchmarks: %s\n", error.what());
    return 1;
  }
}
