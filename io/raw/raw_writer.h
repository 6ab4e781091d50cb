// Writes RAW files.
#pragma once

#include <string>

#include "core/image.h"

namespace img::io::raw {

class RawWriter {
 public:
  // Writes the image's whole buffer. Throws ImageFormatNotSupported for format Invalid, and Io for a file that can't be
  // opened or written.
  static void writeImage(const std::string& path, const IfcImage& image);
};

}  // namespace img::io::raw
