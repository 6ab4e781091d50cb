#include "stop_signals.h"

#include <algorithm>
#include <cerrno>

namespace korvel::tools {

StopSignals::StopSignals() {
  sigemptyset(&awaited_);
  for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGPIPE}) {
    struct sigaction action {};
    // What the caller ignores stays ignored, as under nohup; waiting would hear it all the same.
    if (sigaction(signal, nullptr, &action) == 0 && action.sa_handler != SIG_IGN) sigaddset(&awaited_, signal);
  }
  pthread_sigmask(SIG_BLOCK, &awaited_, &before_);
}

StopSignals::~StopSignals() {
  while (ComeUntil(std::chrono::steady_clock::now())) {
  }
  pthread_sigmask(SIG_SETMASK, &before_, nullptr);
}

bool StopSignals::ComeUntil(std::chrono::steady_clock::time_point then) const {
  using std::chrono::nanoseconds;
  while (true) {
    const nanoseconds left = std::max(nanoseconds(then - std::chrono::steady_clock::now()), nanoseconds(0));
    const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(left);
    const timespec timeout{.tv_sec = seconds.count(), .tv_nsec = (left - seconds).count()};
    if (sigtimedwait(&awaited_, nullptr, &timeout) > 0) return true;
    if (errno != EINTR) return false;
  }
}

}  // namespace korvel::tools
