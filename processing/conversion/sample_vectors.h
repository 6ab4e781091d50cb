// Vector kernels over flat streams of samples: images without regard to their lines and to what their channels mean.
#pragma once

#include <cstddef>
#include <cstdint>

#include "processing/vector_choice.h"

namespace img::processing {

// How samples lie in a stream. What the packed ones mean is told at the plain unpacking (unpack_packed.h).
enum class SampleLayout { kBytes, kWords, k10p, k12p, k10g40, k12g24 };
inline constexpr size_t kSampleLayouts = 6;

// Every kernel works in whole steps of this many samples, which are whole groups of every layout, and touches no byte
// beyond them unless it says so.
inline constexpr size_t kSamplesPerStep = 32;

// Vectors of every instruction set may be stored past the caches at such addresses.
inline constexpr size_t kStreamingAlignment = 32;

struct SampleKernels {
  // Reads samples and changes their depth, which is fromBits in the stream; toBits is 8 for bytes, otherwise at least
  // that, up to 12, for 16-bit words. Bits above a word's depth keep their place as far as there is room for them.
  // With pastCaches, `to` is aligned to kStreamingAlignment, and the caller does EndStreaming afterwards.
  using Read = void (*)(const uint8_t* from, uint8_t* to, size_t stepCount, uint32_t fromBits, uint32_t toBits,
                        bool pastCaches);
  Read readBytes[kSampleLayouts];
  Read readWords[kSampleLayouts];

  // Makes each sample three channels of a pixel, of which a fourth is 255. By the number of channels beyond three.
  using Extend = void (*)(const uint8_t* from, uint8_t* to, size_t stepCount, bool pastCaches);
  Extend extendBytes[2];
  Extend extendWords[2];

  // Swaps the first and the third of three channels, a sample of a step being a pixel here. `also`, which is null or
  // `from`, gets the same pixels. There is at least one pixel before `from` and behind the last, of which bytes are
  // read and not used.
  using Swap = void (*)(const uint8_t* from, uint8_t* to, uint8_t* also, size_t stepCount, bool pastCaches);
  Swap swapBytes;
  Swap swapWords;
};

namespace avx {
extern const SampleKernels kSampleKernels;
}
namespace avx2 {
extern const SampleKernels kSampleKernels;
}

constexpr const SampleKernels* FindSampleKernels(InstructionSet set) {
  return ChooseVectors(set, avx::kSampleKernels, avx2::kSampleKernels);
}

}  // namespace img::processing
