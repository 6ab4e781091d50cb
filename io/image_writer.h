// Writes an image to a file of a type that the caller names or that the path's ending tells.
#pragma once

#include <string>

#include "core/image.h"
#include "io/image_io.h"

namespace img::io {

// Failures are status exceptions of the Io module. A partly written file may stay behind.
class ImageWriter {
 public:
  // path is bytes as the file system takes them. Its directory must exist (none means the working directory), and its
  // ending must be the type's.
  static void writeImage(const IfcImage& image, const std::string& path, const ImgParameter& parameter);

  // The same for the type that the ending tells, with the type's default parameters.
  static void writeImage(const IfcImage& image, const std::string& path);
};

}  // namespace img::io
