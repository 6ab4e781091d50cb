// Conversions in which neither the lines of an image matter nor the neighbours of a pixel, in one pass over its
// samples.
#pragma once

#include <cstddef>
#include <cstdint>

#include "core/image.h"
#include "core/instruction_set.h"
#include "core/processor_features.h"

namespace img::processing {

// Makes, with vectors, what ImageConverter's chain of modules would make: copies, and unpacking, change of depth and
// then extension to colour or swap of red and blue, as far as a conversion needs them. Keeps nothing from one image to
// the next.
class StreamConversion {
 public:
  explicit StreamConversion(const ProcessorFeatures& features);

  // Whether Convert does the whole conversion. It leaves to the modules what fails, what isn't plain in memory, and
  // everything on a processor without AVX.
  bool Takes(const IfcImage& input, PixelFormatId output) const;

  // Writes all pixels of the output, which lie without gaps or alignment and don't overlap the input's. Takes must
  // hold. Intended: a swap at the same depth happens in the input too, as ChannelFlipper does it.
  void Convert(IfcImage& input, PixelFormatId output, uint8_t* pixels) const;

 private:
  InstructionSet set_;
};

}  // namespace img::processing
