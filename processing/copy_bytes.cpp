#include "processing/copy_bytes.h"

#include <cstring>

#include "processing/copy_vectors.h"
#include "processing/streaming.h"

namespace img::processing {

void CopyBytes(const uint8_t* from, uint8_t* to, size_t byteCount, InstructionSet set) {
  const CopyKernels* const vectors = FindCopyKernels(set);
  if (vectors != nullptr && ShouldStream(byteCount)) {
    vectors->stream(from, to, byteCount);
  } else if (byteCount != 0) {
    std::memcpy(to, from, byteCount);
  }
}

}  // namespace img::processing
