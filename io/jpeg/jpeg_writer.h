// Writes JPEG files through libjpeg.
#pragma once

#include <string>

#include "io/image_io.h"

namespace img::io::jpeg {

class JPEGWriter {
 public:
  // Throws ImageFormatNotSupported for a format that JPEG has no place for, and Io for a file that can't be opened or
  // closed, or with the codec's text.
  static void writeImage(const std::string& path, const IfcImage& image, const JPEGParameter& parameter);
};

}  // namespace img::io::jpeg
