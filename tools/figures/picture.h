// Pictures of 8-bit red, green and blue, put together from what the library makes of a camera's frames.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "handles.h"
#include "korvel/korvel.h"

namespace korvel::tools {

struct Picture {
  size_t width = 0;
  size_t height = 0;
  std::vector<uint8_t> rgb{};  // line by line
};

// The image converted to RGB8. A mosaic that isn't to become colour shows its samples in grey.
Picture ColourPicture(const Image& image, KORVEL_CONVERSION_MODE mode);
Picture MosaicPicture(const Image& image);

// A part of a picture, each pixel of it a square of so many.
struct Detail {
  size_t left = 0;
  size_t top = 0;
  size_t width = 0;
  size_t height = 0;
  size_t magnification = 1;
};
Picture Crop(const Picture& picture, const Detail& detail);

// Writes the smallest PNG file.
void WritePicture(const Picture& picture, const std::string& path);

}  // namespace korvel::tools
