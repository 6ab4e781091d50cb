// An image's samples as plain numbers, whatever its format, and what they say.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

#include "image_facts.h"

namespace korvel::tools {

// Colours as people tell them apart; alpha is not one, but a channel as well.
enum class Colour { kGrey, kRed, kGreen, kBlue, kAlpha };

// "red"
std::string_view NameOfColour(Colour colour);

// The samples of an image line by line, with the channels of a pixel side by side.
struct Samples {
  NamedFormat format{};
  size_t width = 0;
  size_t height = 0;
  std::vector<uint16_t> values{};
  size_t channels = 1;  // of each pixel

  // The colour of a channel of the pixel at this place; that of a mosaic depends on the place.
  Colour ColourAt(size_t column, size_t row, size_t channel) const;
};

// Packed formats are unpacked on the way. Throws ToolError.
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
