// Measures a piece of work in turns with what it is compared with, so that all see the machine in the same state.
#pragma once

#include <benchmark/benchmark.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <string>

namespace korvel::benchmarks {

// The subject, a plain implementation of the same operation or what else it competes with, and memory of the same sizes
// for the memory limit: each byte that the work can't help reading or writing counts once.
struct SideBySide {
  std::function<void()> subject;
  std::function<void()> peer;
  std::span<const uint8_t> read = {};
  std::span<uint8_t> written = {};
  size_t pixels = 0;  // 0 for work that has none
  size_t calls = 1;   // that subject and peer make of their work at a time, for work too short for a clock
  std::function<void()> prepare = nullptr;  // before each turn of subject or peer, and not timed
};

// The names of the counters. Times are those of the fastest round, of one call; x_limit and x_peer are the subject's
// time over that of the memory limit and over that of the peer, so that 1 is on a par and less is faster.
inline constexpr const char* kMilliseconds = "ms";
inline constexpr const char* kMegabytesPerSecond = "MB/s";  // read and written together
inline constexpr const char* kNanosecondsPerPixel = "ns/px";
inline constexpr const char* kOverLimit = "x_limit";
inline constexpr const char* kOverPeer = "x_peer";

// Runs the rounds that state asks for and sets the counters.
void Measure(benchmark::State& state, const SideBySide& work);

// Registers a benchmark for a number of rounds.
void Register(const std::string& name, int rounds, const std::function<void(benchmark::State&)>& run);

}  // namespace korvel::benchmarks
