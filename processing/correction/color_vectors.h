// Vector kernels of colour correction, for channels in the order in which they lie in memory.
#pragma once

#include <cstddef>
#include <cstdint>

#include "processing/vector_choice.h"

namespace img::processing {

// Replaces the three colours of pixels by sums of products, (f[0] * first + f[1] * second) + f[2] * third for the first
// of them, limited to 0 to maximum and rounded to the nearest, to the even one of two as near. What is not a number
// becomes 0. in and out are the same or don't overlap. Takes whole vectors, from the first pixel on, and returns how
// many pixels these were.
using CorrectColors = size_t (*)(const uint8_t* in, uint8_t* out, size_t count, const float* factors, float maximum);

struct ColorKernels {
  CorrectColors tripleBytes;  // reads up to 4 bytes behind the last pixel, and writes none
  CorrectColors quadBytes;    // keeps the fourth
  CorrectColors tripleWords;  // of 16 bits
  CorrectColors tripleTens;   // 10 bits each from the lowest of 32 on; keeps the highest two
};

namespace avx {
extern const ColorKernels kColorKernels;
}
namespace avx2 {
extern const ColorKernels kColorKernels;
}

constexpr const ColorKernels* FindColorKernels(InstructionSet set) {
  return ChooseVectors(set, avx::kColorKernels, avx2::kColorKernels);
}

}  // namespace img::processing
