// Vector kernels of gain.
#pragma once

#include <cstddef>
#include <cstdint>

#include "processing/vector_choice.h"

namespace img::processing {

// Samples of even columns are multiplied by one factor and those of odd columns by another; products are limited to the
// largest value of their depth and lose their fraction. Factors lie in 0 to 64. in and out are the same or don't
// overlap. Each takes whole vectors, from the first sample on, and returns how many samples these were: an even number.
struct GainKernels {
  size_t (*bytes)(const uint8_t* in, uint8_t* out, size_t count, float even, float odd);
  // Samples of 16 bits, whose bits above maximum (2^n - 1) are ignored.
  size_t (*words)(const uint8_t* in, uint8_t* out, size_t count, float even, float odd, uint16_t maximum);
};

namespace avx {
extern const GainKernels kGainKernels;
}
namespace avx2 {
extern const GainKernels kGainKernels;
}

constexpr const GainKernels* FindGainKernels(InstructionSet set) {
  return ChooseVectors(set, avx::kGainKernels, avx2::kGainKernels);
}

}  // namespace img::processing
