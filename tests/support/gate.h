// A gate in threads' way, by which a test decides when they go on. It is open at first.
#pragma once

#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <mutex>

namespace korvel_test {

class Gate {
 public:
  // Holds all who come from now on, and counts them from 0.
  void Close() {
    const std::lock_guard lock(mutex_);
    arrived_ = passed_ = 0;
  }

  // Lets so many more through, in the order in which they came.
  void Release(size_t count = 1) {
    const std::lock_guard lock(mutex_);
    passed_ += count;
    changed_.notify_all();
  }

  void Open() {
    const std::lock_guard lock(mutex_);
    passed_ = SIZE_MAX;
    changed_.notify_all();
  }

  // Waits until so many have come since the gate was closed, those included that went on.
  void AwaitArrivals(size_t count) {
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [&] { return arrived_ >= count; });
  }

  // For the threads that are held.
  void Pass() {
    std::unique_lock lock(mutex_);
    const size_t mine = ++arrived_;
    changed_.notify_all();
    changed_.wait(lock, [&] { return mine <= passed_; });
  }

 private:
  std::mutex mutex_;
  std::condition_variable changed_;
  size_t arrived_ = 0;
  size_t passed_ = SIZE_MAX;
};

// Keeps a gate closed for a scope. In a test it stands below the videos whose workers it holds, because those wait for
// their workers when they go.
class ClosedGate {
 public:
  explicit ClosedGate(Gate& gate) : gate_(gate) { gate_.Close(); }
  ClosedGate(const ClosedGate&) = delete;
  ClosedGate& operator=(const ClosedGate&) = delete;
  ~ClosedGate() { gate_.Open(); }

  void AwaitArrivals(size_t count) { gate_.AwaitArrivals(count); }
  void Release(size_t count = 1) { gate_.Release(count); }
  void Open() { gate_.Open(); }

 private:
  Gate& gate_;
};

}  // namespace korvel_test
