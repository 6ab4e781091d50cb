// The grey of 2 by 2 blocks, a line at a time.
#pragma once

#include <cstddef>
#include <cstdint>

#include "core/pixel_format.h"
#include "processing/conversion/demosaic_vectors.h"

namespace img::processing {

// Intended: the heavy sample doesn't lie on red and the light one not on blue. They lie where the neighbouring phase
// would have them, on the two greens of BayerGR and BayerGB; the weights make a grey that is slightly off a true
// luminance, and stay so.
struct HeavySample {
  size_t column;
  size_t line;
};

constexpr HeavySample HeavySampleOf(PixelClass bayerClass) {
  switch (bayerClass) {
    case PixelClass::BayerRG:
      return {1, 0};
    case PixelClass::BayerGB:
      return {1, 1};
    case PixelClass::BayerBG:
      return {0, 1};
    default:
      return {0, 0};  // BayerGR
  }
}

// A line with another one below it, of an image of at least two columns. The pointers are to the first sample or pixel,
// without alignment.
struct MonoLine {
  const uint8_t* upper;
  const uint8_t* lower;
  uint8_t* output;
  size_t width;
  bool isUpperHeavy;
  size_t heavyColumn;
  uint32_t maximum;  // of the depth, which tells bytes from words
  bool isStreamed;   // past the caches, until EndStreaming
};

// Gives what TBayerToMono2x2Simple does, the last column, which is a copy, among it.
void MakeMonoLine(const MonoLine& line, const DemosaicKernels& kernels);

}  // namespace img::processing
