// Vector kernels of the 5x5 demosaic, over lines of a mosaic whose even and odd columns lie apart.
#pragma once

#include <cstddef>
#include <cstdint>

#include "processing/conversion/colour_layout.h"
#include "processing/vector_choice.h"

namespace img::processing {

// The filter's lanes have room for samples up to this.
inline constexpr uint32_t kLargestFilteredSample = 4095;

// Every kernel needs at least as many columns.
inline constexpr size_t kFewestFilteredColumns = 32;

// The filter on columns first to last - 1 of an output line, none of them among the image's first two or last two.
struct FilterTask {
  const uint16_t* even[5];  // the five lines around the pixels, from above: columns 0, 2, ...
  ptrdiff_t odd;            // columns 1, 3, ... lie this many samples behind those of the same line
  uint8_t* output;          // the address of the line's first pixel, without alignment
  size_t first;
  size_t last;
  size_t ownColumn;  // the parity of the columns at which the line has its own colour
  bool isOwnFirst;   // in the output pixel, otherwise third
  uint32_t maximum;  // of the depth; alpha too
  bool isStreamed;   // past the caches; whoever streamed flushes at the end
};

struct FilterKernels {
  // Takes the even and the odd columns of a line apart, which consists of bytes or of 16-bit words without alignment.
  // The latter gives the bits that occur in any of them.
  void (*splitBytes)(const uint8_t* line, size_t width, uint16_t* even, uint16_t* odd);
  uint32_t (*splitWords)(const uint8_t* line, size_t width, uint16_t* even, uint16_t* odd);

  // By ColourLayout. The filter keeps the bits of 32-bit words that carry nothing, so there is none for Word32.
  void (*filter[kColourLayouts])(const FilterTask& task);
};

namespace avx {
extern const FilterKernels kFilterKernels;
}
namespace avx2 {
extern const FilterKernels kFilterKernels;
}

constexpr const FilterKernels* FindFilterKernels(InstructionSet set) {
  return ChooseVectors(set, avx::kFilterKernels, avx2::kFilterKernels);
}

}  // namespace img::processing
