// An image's samples as plain numbers, whatever its format, and what they say.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "colours.h"
#include "handles.h"
#include "image_facts.h"

namespace korvel::tools {

// Replaces an image whose format is packed by one with the unpacked format of its depth. Throws ToolError.
void Unpack(Image& image);

// The samples of an image line by line, with the channels of a pixel side by side.
struct Samples {
  NamedFormat format{};
  size_t width = 0;
  size_t height = 0;
  std::vector<uint16_t> values{};
  size_t channels = 1;  // of each pixel
};

// The image is not of a packed format. Throws ToolError.
Samples ReadSamples(const Image& image);

struct ColourStatistics {
  Colour colour{};
  size_t count = 0;
  uint16_t minimum = 0;
  uint16_t maximum = 0;
  double mean = 0;
};

// One entry for each colour that the image has, in the order of Colour.
std::vector<ColourStatistics> Measure(const Samples& samples);

}  // namespace korvel::tools
