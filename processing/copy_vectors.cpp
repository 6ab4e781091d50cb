#include "processing/copy_vectors.h"

#include <hwy/cache_control.h>

#include <cstring>

#include "processing/vectors.h"

namespace img::processing::KORVEL_VECTORS {
namespace {

void Stream(const uint8_t* from, uint8_t* to, size_t byteCount) {
  const hn::ScalableTag<uint8_t> d;
  constexpr size_t kLanes = KORVEL_VECTOR_BYTES;
  // Non-temporal stores want aligned addresses.
  const size_t misalignment = reinterpret_cast<uintptr_t>(to) % kLanes;
  const size_t head = misalignment == 0 ? 0 : kLanes - misalignment;
  if (byteCount < head + kLanes) {
    if (byteCount != 0) std::memcpy(to, from, byteCount);
    return;
  }
  std::memcpy(to, from, head);
  size_t i = head;
  for (; i + 4 * kLanes <= byteCount; i += 4 * kLanes) {
    const auto a = hn::LoadU(d, from + i);
    const auto b = hn::LoadU(d, from + i + kLanes);
    const auto c = hn::LoadU(d, from + i + 2 * kLanes);
    const auto e = hn::LoadU(d, from + i + 3 * kLanes);
    hn::Stream(a, d, to + i);
    hn::Stream(b, d, to + i + kLanes);
    hn::Stream(c, d, to + i + 2 * kLanes);
    hn::Stream(e, d, to + i + 3 * kLanes);
  }
  hwy::FlushStream();  // whoever is handed the memory sees it in any order of loads
  if (i < byteCount) std::memcpy(to + i, from + i, byteCount - i);
}

}  // namespace

extern const CopyKernels kCopyKernels = {.stream = Stream};

}  // namespace img::processing::KORVEL_VECTORS
