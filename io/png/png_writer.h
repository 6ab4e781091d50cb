// Writes PNG files through libpng.
#pragma once

#include <string>

#include "io/image_io.h"

namespace img::io::png {

class PNGWriter {
 public:
  // zlib's level for a quality, which counts as a signed number: 9 - (quality - 10) / 10. Quality 100 gives 0 and 10
  // gives 9; beyond them it may be a level that zlib doesn't have.
  static int CompressionLevel(uint32_t quality);

  // Throws ImageFormatNotSupported for a format that PNG has no place for, and Io with the text of the stage that
  // failed. A level that zlib refuses is a failure of its stage.
  static void writeImage(const std::string& path, const IfcImage& image, const PNGParameter& parameter);
};

}  // namespace img::io::png
