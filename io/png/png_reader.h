// Reads PNG files through libpng.
#pragma once

#include <memory>
#include <optional>
#include <string>

#include "core/image.h"
#include "core/image_buffer.h"
#include "io/file_input.h"

namespace img::io::png {

class PNGReader {
 public:
  // Samples of 1, 2 and 4 bits are expanded to 8, and those of 16 bits without significant bits reduced to 8;
  // transparent colours are ignored. Throws Io for a file that can't be opened or is too large, or with the text of the
  // stage that failed; and as PNGHeader::reselectPixelFormat does.
  static std::unique_ptr<IfcImage> readImage(const std::string& path, buffer::IfcBufferFactory& bufferFactory,
                                             std::optional<PixelFormatId> requested);
};

using PNGInput = FileInput<PNGReader>;

}  // namespace img::io::png
