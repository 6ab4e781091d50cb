// What the processor can do, as far as results or the choice of a path depend on it.
#pragma once

#include <cstdint>

namespace img {

// Objects with more than one path take a record when they are made and keep a copy, so that tests reach every path on
// one machine.
struct ProcessorFeatures {
  uint8_t sse = 0;
  uint8_t sse2 = 0;
  uint8_t sse3 = 0;
  uint8_t ssse3 = 0;
  uint8_t sse41 = 0;
  uint8_t sse42 = 0;
  uint8_t avx = 0;
  uint8_t avx2 = 0;

  // Read once per process with the CPUID instruction. Whether the operating system supports the wider registers isn't
  // asked.
  static const ProcessorFeatures& OfThisProcessor();
};

static_assert(sizeof(ProcessorFeatures) == 8);

}  // namespace img
