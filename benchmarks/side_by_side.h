// Measures a piece of work in turns with what it is compared with, so that all see the machine in the same state.
#pragma once

#include <benchmark/benchmark.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <vector>

namespace korvel::benchmarks {

struct Contestant {
  std::string name;
  std::function<void()> run;
  std::function<void()> prepare = nullptr;  // before each run, outside its time
  bool isSame = true;                       // whether it gives the subject's result to the byte
  std::string remark = {};                  // how far it doesn't
};

struct SideBySide {
  std::function<void()> run;
  std::function<void()> prepare = nullptr;
  // The ways to do what the machine can't do faster, of which the fastest counts; none where there is no such thing.
  std::vector<Contestant> limits = {};
  std::vector<Contestant> peers = {};
  size_t pixels = 0;      // 0 for work that has none
  size_t callsInRun = 1;  // for work that comes in batches
};

// The names of the counters. Times are of the processor, with the work of all threads: medians over the rounds in
// nanoseconds for each call, with the quartiles where two runs are to be compared; x_limit and x_peer are the subject's
// time over that of the limit and over that of the fastest peer.
namespace counter {
inline constexpr const char* kTime = "ns";
inline constexpr const char* kTimeQuartile1 = "ns_q1";
inline constexpr const char* kTimeQuartile3 = "ns_q3";
inline constexpr const char* kLimit = "limit_ns";
inline constexpr const char* kPeer = "peer_ns";
inline constexpr const char* kPixels = "pixels";
inline constexpr const char* kOverLimit = "x_limit";
inline constexpr const char* kOverPeer = "x_peer";
inline constexpr const char* kGoalOverLimit = "goal_x_limit";  // absent where there is none
inline constexpr const char* kGoalOverPeer = "goal_x_peer";
inline constexpr const char* kGoalIsMet = "goal_met";  // 0 or 1; absent without a goal
inline constexpr const char* kOneOfPeers = "peer ";    // followed by a peer's name: its time
}  // namespace counter

// Runs the rounds that state asks for and sets the counters, and the fastest peer's name as the label.
void Measure(benchmark::State& state, const SideBySide& work);

// Registers a benchmark of an operation at a size for a number of rounds, with its goals.
void Register(const std::string& operation, const std::string& size, int rounds,
              const std::function<void(benchmark::State&)>& run);

}  // namespace korvel::benchmarks
