// Reads RAW files.
#pragma once

#include <memory>
#include <optional>
#include <string>

#include "core/image.h"
#include "core/image_buffer.h"
#include "io/file_input.h"

namespace img::io::raw {

class RAWReader {
 public:
  // The image has the file's format, also where another was asked for. Throws Io for a file that can't be opened or
  // doesn't hold what its head tells, OutOfRange for a width or height of 0, and InvalidParameterUtilx for a format
  // that isn't public.
  static std::unique_ptr<IfcImage> readImage(const std::string& path, buffer::IfcBufferFactory& bufferFactory,
                                             std::optional<PixelFormatId> requested);

  // A request is met by the file's own format, and that for a mono format by the Bayer formats of its depth and layout;
  // MIPI layouts are left out. Throws ImageFormatInterpretationError for any other.
  static void reselectPixelFormat(PixelFormatId requested, PixelFormatId found);
};

using RAWInput = FileInput<RAWReader>;

}  // namespace img::io::raw
