// What tests replace: the worker's speed, the disk and the largest file.
#pragma once

#include <atomic>
#include <cstdint>

#include "status/never_destroyed.h"

namespace libvideo {

struct Seams {
  static constexpr uint64_t kLargestFile = uint64_t{1} << 32;

  std::atomic<void (*)()> beforeFrame = nullptr;         // called by a worker before it compresses a frame
  std::atomic<const uint64_t*> freeKibibytes = nullptr;  // instead of the disk's free space
  std::atomic<uint64_t> mostFrameBytes = kLargestFile;   // of compressed frames in one file
  std::atomic<bool> failsToStart = false;                // as if the system had no thread to give

  static Seams& Instance() {
    static korvel::internal::NeverDestroyed<Seams> seams;
    return seams.object;
  }
};

}  // namespace libvideo
