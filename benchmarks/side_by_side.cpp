#include "benchmarks/side_by_side.h"

#include <algorithm>
#include <chrono>
#include <limits>

#include "benchmarks/memory_limit.h"

namespace korvel::benchmarks {
namespace {

template <class Run>
double SecondsOf(Run&& run) {
  using Clock = std::chrono::steady_clock;
  const Clock::time_point start = Clock::now();
  run();
  return std::chrono::duration<double>(Clock::now() - start).count();
}

// Shorter runs of the memory limit are repeated, as a single one may fall between two steps of the processor's clock.
constexpr size_t kLeastStreamBytes = size_t{1} << 20;

}  // namespace

void Measure(benchmark::State& state, const SideBySide& work) {
  const size_t bytes = work.read.size() + work.written.size();
  const size_t streams = bytes == 0 ? 0 : kLeastStreamBytes / bytes + 1;
  double limit = std::numeric_limits<double>::max();
  double subject = limit;
  double peer = limit;
  for ([[maybe_unused]] auto round : state) {
    const double limitNow = SecondsOf([&] {
      for (size_t i = 0; i < streams; ++i) benchmark::DoNotOptimize(Stream(work.read, work.written));
      benchmark::ClobberMemory();
    });
    if (work.prepare) work.prepare();
    const double subjectNow = SecondsOf(work.subject);
    benchmark::ClobberMemory();
    if (work.prepare) work.prepare();
    const double peerNow = SecondsOf(work.peer);
    benchmark::ClobberMemory();
    limit = std::min(limit, limitNow);
    subject = std::min(subject, subjectNow);
    peer = std::min(peer, peerNow);
    state.SetIterationTime(subjectNow / static_cast<double>(work.calls));
  }

  const double call = subject / static_cast<double>(work.calls);
  state.counters[kMilliseconds] = call * 1e3;
  state.counters[kOverPeer] = subject / peer;
  if (work.pixels != 0) state.counters[kNanosecondsPerPixel] = call * 1e9 / static_cast<double>(work.pixels);
  if (bytes != 0) {
    state.counters[kMegabytesPerSecond] = static_cast<double>(bytes) / call * 1e-6;
    state.counters[kOverLimit] = call / (limit / static_cast<double>(streams));
  }
}

void Register(const std::string& name, int rounds, const std::function<void(benchmark::State&)>& run) {
  benchmark::RegisterBenchmark(name.c_str(), run)->Iterations(rounds)->UseManualTime()->Unit(benchmark::kMillisecond);
}

}  // namespace korvel::benchmarks
