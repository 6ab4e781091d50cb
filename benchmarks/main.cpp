// Measures the conversion modules and the exported functions; see docs/performance.md.

#include <benchmark/benchmark.h>

#include <cstdio>
#include <exception>

#include "benchmarks/registration.h"
#include "benchmarks/table_reporter.h"

int main(int argc, char** argv) {
  try {
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 2;
    korvel::benchmarks::RegisterModules();
    korvel::benchmarks::RegisterChains();
    korvel::benchmarks::RegisterGeometry();
    korvel::benchmarks::RegisterMeasure();
    korvel::benchmarks::RegisterHotpixels();
    korvel::benchmarks::RegisterCorrections();
    korvel::benchmarks::RegisterImageFiles();
    korvel::benchmarks::RegisterVideo();
    korvel::benchmarks::TableReporter reporter;
    const size_t count = benchmark::RunSpecifiedBenchmarks(&reporter);
    return count == 0 || reporter.HasFailure() ? 1 : 0;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "korvel_benchmarks: %s\n", error.what());
    return 1;
  }
}
