// Writes PNG files through libpng.
#pragma once

#include <string>

#include "io/image_io.h"

namespace img::io::png {

class PNGWriter {
 public:
  // Throws ImageFormatNotSupported for a format that PNG has no place for, and Io with the text of the stage that
  // failed. The compression level is 9 - (quality - 10) / 10, with the quality as a signed number; one that zlib
  // refuses is a failure of its stage.
  static void writeImage(const std::string& path, const IfcImage& image, const PNGParameter& parameter);
};

}  // namespace img::io::png
