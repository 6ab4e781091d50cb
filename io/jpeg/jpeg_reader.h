// Reads JPEG files through libjpeg.
#pragma once

#include <cstdio>  // for jpeglib.h, which includes nothing itself

#include <jpeglib.h>

#include <memory>
#include <optional>
#include <string>

#include "core/image.h"
#include "core/image_buffer.h"
#include "io/file_input.h"

namespace img::io::jpeg {

class JPEGReader {
 public:
  // Throws Io for a file that can't be opened, is too large or has too many scans, or with the codec's text; and as the
  // functions of JPEGHeader do.
  static std::unique_ptr<IfcImage> readImage(const std::string& path, buffer::IfcBufferFactory& bufferFactory,
                                             std::optional<PixelFormatId> requested);

  // libjpeg's way out of a failed call, for reading and writing: destroys the structure and throws Io with the text of
  // the codec's message table, whose places for numbers stay unfilled.
  [[noreturn]] static void JpegErrorExit(j_common_ptr cinfo);
};

using JPEGInput = FileInput<JPEGReader>;

}  // namespace img::io::jpeg
