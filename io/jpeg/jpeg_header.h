// How the pixels of an image go into a JPEG file and come out of one.
//
//   format            colour space       components
//   Mono8, Bayer 8    JCS_GRAYSCALE      1
//   RGB8              JCS_RGB            3
//   BGR8              JCS_EXT_BGR        3
//   RGBa8             JCS_EXT_RGBA       4
//   BGRa8             JCS_EXT_BGRA       4
#pragma once

#include <cstdio>  // for jpeglib.h, which includes nothing itself

#include <jpeglib.h>

#include <cstddef>
#include <optional>

#include "core/image.h"
#include "core/pixel_format.h"

namespace img::io::jpeg {

struct JPEGHeader {
  size_t width = 0;
  size_t height = 0;
  int inputComponents = 0;
  J_COLOR_SPACE colourSpace = JCS_UNKNOWN;

  // Throws ImageFormatNotSupported for a format that has no line in the table above.
  static JPEGHeader imgToHeader(const IfcImage& image);

  // The format of samples as the codec delivers them. Throws ImageFormatNotSupported for any other colour space.
  static PixelFormatId formatOfColourSpace(J_COLOR_SPACE colourSpace);

  // The format to read them as. Throws ImageFormatInterpretationError for a request that isn't allowed.
  static PixelFormatId reselectPixelFormat(PixelFormatId found, std::optional<PixelFormatId> requested);
};

}  // namespace img::io::jpeg
