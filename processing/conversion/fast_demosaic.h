// The bilinear demosaic of the fast paths, a line at a time: a neighbour outside the image is left out of its mean.
#pragma once

#include <cstddef>
#include <cstdint>

#include "core/instruction_set.h"
#include "core/pixel_format.h"
#include "processing/bayer_phase.h"

namespace img::processing {

// A line of an image of at least 16 by 16 pixels. The pointers are to the first sample or pixel, without alignment.
struct FastLine {
  const uint8_t* above;  // null for the image's first line
  const uint8_t* here;
  const uint8_t* below;  // null for its last line
  uint8_t* output;
  size_t width;
  bool isRedLine;
  size_t ownColumn;  // the parity of the columns at which the line has its own colour
  InstructionSet set;
  bool isStreamed;        // the inner columns past the caches, until EndStreaming
  size_t luminanceLanes;  // how many columns of luminance are computed as lanes of one vector; tells results apart
};

using MakeFastLine = void (*)(const FastLine& line);

// Null if there is no fast path to this format. Samples are those of the format: words for RGB10p32, or else bytes.
MakeFastLine FindFastLine(PixelFormatId output);

}  // namespace img::processing
