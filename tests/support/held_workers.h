// Holds the workers of recordings before they compress a frame, and sets the other seams of video writing for a scope.
#pragma once

#include <atomic>
#include <cstddef>

#include "tests/support/gate.h"
#include "video/seams.h"

namespace korvel_test {

inline Gate beforeFrameGate;

class HeldWorkers : public ClosedGate {
 public:
  HeldWorkers() : ClosedGate(beforeFrameGate) {
    libvideo::Seams::Instance().beforeFrame = [] { beforeFrameGate.Pass(); };
  }
  ~HeldWorkers() { libvideo::Seams::Instance().beforeFrame = nullptr; }
};

template <class Value>
class SeamValue {
 public:
  SeamValue(std::atomic<Value>& seam, Value value) : seam_(seam), before_(seam.exchange(value)) {}
  SeamValue(const SeamValue&) = delete;
  SeamValue& operator=(const SeamValue&) = delete;
  ~SeamValue() { seam_ = before_; }

 private:
  std::atomic<Value>& seam_;
  Value before_;
};

}  // namespace korvel_test
