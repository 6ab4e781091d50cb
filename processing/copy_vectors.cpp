#include "processing/copy_vectors.h"

#include "processing/stream_vectors.h"

namespace img::processing::KORVEL_VECTORS {
namespace {

void Stream(const uint8_t* from, uint8_t* to, size_t byteCount) {
  StreamRun(from, to, byteCount);
  hwy::FlushStream();  // whoever is handed the memory sees it in any order of loads
}

}  // namespace

extern const CopyKernels kCopyKernels = {.stream = Stream};

}  // namespace img::processing::KORVEL_VECTORS
