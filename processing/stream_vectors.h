// Stores past the caches. For sources of vector kernels, after processing/vectors.h.
#pragma once

#include <hwy/cache_control.h>

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "processing/vectors.h"

namespace img::processing::KORVEL_VECTORS {
namespace {

constexpr size_t kCacheLine = 64;

// Copies bytes by whole lines of the cache, and the rest by ordinary stores. Ends without a fence: hwy::FlushStream is
// to follow the last run.
inline void StreamRun(const uint8_t* from, uint8_t* to, size_t byteCount) {
  constexpr size_t kLanes = KORVEL_VECTOR_BYTES;
  const size_t misalignment = reinterpret_cast<uintptr_t>(to) % kCacheLine;
  const size_t head = misalignment == 0 ? 0 : kCacheLine - misalignment;
  if (byteCount < head + kCacheLine) {
    if (byteCount != 0) std::memcpy(to, from, byteCount);
    return;
  }
  std::memcpy(to, from, head);
  size_t i = head;
  for (; i + kCacheLine <= byteCount; i += kCacheLine) {
    for (size_t part = 0; part < kCacheLine; part += kLanes) {
      hn::Stream(hn::LoadU(kBytes, from + i + part), kBytes, to + i + part);
    }
  }
  if (i < byteCount) std::memcpy(to + i, from + i, byteCount - i);
}

}  // namespace
}  // namespace img::processing::KORVEL_VECTORS
