#include "benchmarks/side_by_side.h"

#include <time.h>

#include <algorithm>
#include <cmath>
#include <iterator>
#include <optional>
#include <utility>

#include "benchmarks/goals.h"

namespace korvel::benchmarks {
namespace {

// What this program took of the processor, with all its threads: of no interest is when others had the core.
double Now() {
  timespec time{};
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

// A turn lasts at least as long, over as many calls as that takes.
constexpr double kLeastTurn = 2e-3;
constexpr double kMostCalls = 20000;

// Each turn starts with a call that isn't timed and finds the caches as other contestants left them; in a loop over
// frames that is the first call alone. Calls that take longer than this don't feel it.
constexpr double kLongCall = 20e-3;

// Peers that after some rounds take this many times the fastest peer's time are out: nobody will ask.
constexpr size_t kTrialRounds = 3;
constexpr double kFarBehind = 1.5;

double At(std::vector<double> values, double share) {
  std::sort(values.begin(), values.end());
  const double position = share * static_cast<double>(values.size() - 1);
  const auto below = static_cast<size_t>(position);
  const size_t above = std::min(below + 1, values.size() - 1);
  return values[below] + (values[above] - values[below]) * (position - std::floor(position));
}

double Median(const std::vector<double>& values) { return At(values, 0.5); }

// One contestant's rounds.
class Turns {
 public:
  explicit Turns(Contestant contestant) : contestant_(std::move(contestant)) {
    RunOnce();  // takes memory and fills tables
    const double call = RunOnce();
    isLong_ = call > kLongCall;
    calls_ = static_cast<size_t>(std::clamp(std::ceil(kLeastTurn / std::max(call, 1e-9)), 1.0, kMostCalls));
  }

  double Take() {
    if (!isLong_) RunOnce();
    double seconds = 0;
    if (contestant_.prepare) {
      for (size_t i = 0; i < calls_; ++i) seconds += RunOnce();
    } else {
      const double start = Now();
      for (size_t i = 0; i < calls_; ++i) contestant_.run();
      seconds = Now() - start;
    }
    seconds_.push_back(seconds / static_cast<double>(calls_));
    return seconds_.back();
  }

  const Contestant& Who() const { return contestant_; }
  const std::vector<double>& Seconds() const { return seconds_; }

 private:
  double RunOnce() const {
    if (contestant_.prepare) contestant_.prepare();
    const double start = Now();
    contestant_.run();
    return Now() - start;
  }

  Contestant contestant_;
  bool isLong_ = false;
  size_t calls_ = 1;
  std::vector<double> seconds_;
};

std::vector<Turns> MakeTurns(const std::vector<Contestant>& contestants) {
  return {contestants.begin(), contestants.end()};
}

const Turns* Fastest(const std::vector<Turns>& all) {
  const auto found = std::min_element(all.begin(), all.end(), [](const Turns& one, const Turns& other) {
    return Median(one.Seconds()) < Median(other.Seconds());
  });
  return found == all.end() ? nullptr : &*found;
}

// Beside the limit and the peer of the same run.
void SetGoals(benchmark::State& state, const Goal& goal) {
  const auto valueOf = [&](const char* name) {
    const auto found = state.counters.find(name);
    return found == state.counters.end() ? std::nullopt : std::optional<double>(found->second.value);
  };
  const auto compare = [&](const char* goalName, double value, double most) {
    state.counters[goalName] = most;
    const bool isMet = valueOf(counter::kGoalIsMet).value_or(1) != 0 && IsMet(value, most);
    state.counters[counter::kGoalIsMet] = isMet ? 1 : 0;
  };
  const std::optional<double> overLimit = valueOf(counter::kOverLimit);
  const std::optional<double> overPeer = valueOf(counter::kOverPeer);
  if (goal.overLimit && overLimit) compare(counter::kGoalOverLimit, *overLimit, *goal.overLimit);
  if (goal.overPeer && overPeer) {
    // No peer makes a call faster than the memory.
    const double least = overLimit ? kLeastOverLimit * *overPeer / *overLimit : 0;
    compare(counter::kGoalOverPeer, *overPeer, std::max(*goal.overPeer, least));
  }
}

}  // namespace

void Measure(benchmark::State& state, const SideBySide& work) {
  Turns subject({.name = "", .run = work.run, .prepare = work.prepare});
  std::vector<Turns> limits = MakeTurns(work.limits);
  std::vector<Turns> peers = MakeTurns(work.peers);
  std::vector<Turns> out;
  size_t round = 0;
  for ([[maybe_unused]] auto each : state) {
    for (Turns& limit : limits) limit.Take();
    const double seconds = subject.Take();
    for (Turns& peer : peers) peer.Take();
    state.SetIterationTime(seconds / static_cast<double>(work.callsInRun));
    if (++round == kTrialRounds && !peers.empty()) {
      const double best = Median(Fastest(peers)->Seconds());
      const auto isNear = [&](const Turns& peer) { return Median(peer.Seconds()) <= kFarBehind * best; };
      const auto behind = std::stable_partition(peers.begin(), peers.end(), isNear);
      std::move(behind, peers.end(), std::back_inserter(out));
      peers.erase(behind, peers.end());
    }
  }

  const auto nanoseconds = [&](double seconds) { return seconds * 1e9 / static_cast<double>(work.callsInRun); };
  const double time = nanoseconds(Median(subject.Seconds()));
  state.counters[counter::kTime] = time;
  state.counters[counter::kTimeQuartile1] = nanoseconds(At(subject.Seconds(), 0.25));
  state.counters[counter::kTimeQuartile3] = nanoseconds(At(subject.Seconds(), 0.75));
  if (work.pixels != 0) state.counters[counter::kPixels] = static_cast<double>(work.pixels);
  if (const Turns* const limit = Fastest(limits)) {
    state.counters[counter::kLimit] = nanoseconds(Median(limit->Seconds()));
    state.counters[counter::kOverLimit] = time / state.counters[counter::kLimit];
  }
  if (const Turns* const peer = Fastest(peers)) {
    state.counters[counter::kPeer] = nanoseconds(Median(peer->Seconds()));
    state.counters[counter::kOverPeer] = time / state.counters[counter::kPeer];
    state.SetLabel(peer->Who().name + ", " + (peer->Who().isSame ? "same" : peer->Who().remark));
  }
  for (const std::vector<Turns>* const group : {&peers, &out}) {
    for (const Turns& peer : *group) {
      state.counters[counter::kOneOfPeers + peer.Who().name] = nanoseconds(Median(peer.Seconds()));
    }
  }
}

void Register(const std::string& operation, const std::string& size, int rounds,
              const std::function<void(benchmark::State&)>& run) {
  const std::string name = operation + "/" + size;
  benchmark::RegisterBenchmark(name.c_str(),
                               [=](benchmark::State& state) {
                                 run(state);
                                 if (const std::optional<Goal> goal = FindGoal(operation, size)) SetGoals(state, *goal);
                               })
      ->Iterations(rounds)
      ->UseManualTime()
      ->Unit(benchmark::kMillisecond);
}

}  // namespace korvel::benchmarks
