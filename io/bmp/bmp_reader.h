// Reads BMP files.
#pragma once

#include <memory>
#include <optional>
#include <string>

#include "core/image.h"
#include "core/image_buffer.h"
#include "io/file_input.h"

namespace img::io::bmp {

class BMPReader {
 public:
  // Lines are stored as they come: a file that was written from RGB8 reads as RGB8 with red and blue exchanged. Throws
  // Io for a file that can't be opened or doesn't hold what its head tells, and as BMPHeader::reselectPixelFormat does.
  static std::unique_ptr<IfcImage> readImage(const std::string& path, buffer::IfcBufferFactory& bufferFactory,
                                             std::optional<PixelFormatId> requested);
};

using BMPInput = FileInput<BMPReader>;

}  // namespace img::io::bmp
