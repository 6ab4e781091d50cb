// Reads an image from a file of a type that the path's ending tells.
#pragma once

#include <memory>
#include <string>

#include "core/image.h"
#include "core/image_buffer.h"
#include "io/image_io.h"

namespace img::io {

// Failures are status exceptions of the Io module. path is bytes as the file system takes them.
class ImageReader {
 public:
  // The input object for a path; the file isn't touched yet.
  static std::unique_ptr<IfcImageInput> createImageReader(
      const std::string& path, const std::shared_ptr<buffer::IfcBufferFactory>& bufferFactory);

  // The image that a file holds, in a buffer of the factory's.
  static std::unique_ptr<IfcImage> readImage(const std::string& path,
                                             const std::shared_ptr<buffer::IfcBufferFactory>& bufferFactory);

  // The same with the pixels taken for another format; none is converted. What may be asked for depends on the file
  // type.
  static std::unique_ptr<IfcImage> readImage(const std::string& path,
                                             const std::shared_ptr<buffer::IfcBufferFactory>& bufferFactory,
                                             PixelFormatId pixelFormat);
};

}  // namespace img::io
