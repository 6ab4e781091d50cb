// The colours that an image's channels and a mosaic's pixels stand for.
#pragma once

#include <cstddef>
#include <string_view>

#include "format_names.h"

namespace korvel::tools {

// Alpha is none, but a channel as well.
enum class Colour { kGrey, kRed, kGreen, kBlue, kAlpha };
inline constexpr size_t kColourCount = 5;

// "red"
std::string_view NameOfColour(Colour colour);

// The colour of a channel, in the order of the format's name; grey for mono and for Bayer, which have one channel.
Colour ColourOfChannel(const NamedFormat& format, size_t channel);

// The colour of a channel of the pixel at this place: that of a mosaic depends on the place.
Colour ColourAt(const NamedFormat& format, size_t column, size_t row, size_t channel);

}  // namespace korvel::tools
