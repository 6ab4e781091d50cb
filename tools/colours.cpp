#include "colours.h"

#include <array>

namespace korvel::tools {
namespace {

Colour MosaicColour(PixelFamily family, size_t column, size_t row) {
  const bool red_in_odd_columns = family == PixelFamily::kBayerGR || family == PixelFamily::kBayerBG;
  const bool red_in_odd_rows = family == PixelFamily::kBayerGB || family == PixelFamily::kBayerBG;
  const bool in_red_column = (column % 2 == 1) == red_in_odd_columns;
  const bool in_red_row = (row % 2 == 1) == red_in_odd_rows;
  if (in_red_column != in_red_row) return Colour::kGreen;
  return in_red_row ? Colour::kRed : Colour::kBlue;
}

}  // namespace

std::string_view NameOfColour(Colour colour) {
  constexpr std::array<std::string_view, kColourCount> kNames{"grey", "red", "green", "blue", "alpha"};
  return kNames[static_cast<size_t>(colour)];
}

Colour ColourOfChannel(const NamedFormat& format, size_t channel) {
  constexpr Colour kRedFirst[] = {Colour::kRed, Colour::kGreen, Colour::kBlue, Colour::kAlpha};
  constexpr Colour kBlueFirst[] = {Colour::kBlue, Colour::kGreen, Colour::kRed, Colour::kAlpha};
  switch (format.family) {
    case PixelFamily::kRGB:
    case PixelFamily::kRGBa:
      return kRedFirst[channel];
    case PixelFamily::kBGR:
    case PixelFamily::kBGRa:
      return kBlueFirst[channel];
    default:
      return Colour::kGrey;
  }
}

Colour ColourAt(const NamedFormat& format, size_t column, size_t row, size_t channel) {
  return IsBayer(format) ? MosaicColour(format.family, column, row) : ColourOfChannel(format, channel);
}

}  // namespace korvel::tools
