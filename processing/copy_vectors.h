// Vector kernels of copies.
#pragma once

#include <cstddef>
#include <cstdint>

#include "processing/vector_choice.h"

namespace img::processing {

struct CopyKernels {
  // Copies bytes past the caches.
  void (*stream)(const uint8_t* from, uint8_t* to, size_t byteCount);
};

namespace avx {
extern const CopyKernels kCopyKernels;
}
namespace avx2 {
extern const CopyKernels kCopyKernels;
}

constexpr const CopyKernels* FindCopyKernels(InstructionSet set) {
  return ChooseVectors(set, avx::kCopyKernels, avx2::kCopyKernels);
}

}  // namespace img::processing
