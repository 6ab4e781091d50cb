// Ctrl-C for a command that has something to finish first.
#pragma once

#include <csignal>

#include <chrono>

namespace korvel::tools {

// While one exists, the signals that end a program at a user's wish, or because nobody reads its output any more, wait
// to be asked for. So they do for threads that are started meanwhile. Those that nobody asked for are dropped when it
// ends: a second one, as of an impatient Ctrl-C, asks for what has been done, and would end the program before it can
// say so.
class StopSignals {
 public:
  StopSignals();
  StopSignals(const StopSignals&) = delete;
  StopSignals& operator=(const StopSignals&) = delete;
  ~StopSignals();

  // Waits until then at most. Whether one came, now or since it was asked for last.
  bool ComeUntil(std::chrono::steady_clock::time_point then) const;

 private:
  sigset_t awaited_;
  sigset_t before_;
};

}  // namespace korvel::tools
