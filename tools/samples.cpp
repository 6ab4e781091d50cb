#include "samples.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <string>

#include "korvel/korvel.h"
#include "library_error.h"

namespace korvel::tools {
namespace {

constexpr std::array<std::string_view, 5> kColourNames{"grey", "red", "green", "blue", "alpha"};

Colour MosaicColour(PixelFamily family, size_t column, size_t row) {
  const bool red_in_odd_columns = family == PixelFamily::kBayerGR || family == PixelFamily::kBayerBG;
  const bool red_in_odd_rows = family == PixelFamily::kBayerGB || family == PixelFamily::kBayerBG;
  const bool in_red_column = (column % 2 == 1) == red_in_odd_columns;
  const bool in_red_row = (row % 2 == 1) == red_in_odd_rows;
  if (in_red_column != in_red_row) return Colour::kGreen;
  return in_red_row ? Colour::kRed : Colour::kBlue;
}

}  // namespace

std::string_view NameOfColour(Colour colour) { return kColourNames[static_cast<size_t>(colour)]; }

Colour Samples::ColourAt(size_t column, size_t row, size_t channel) const {
  constexpr Colour kRedFirst[] = {Colour::kRed, Colour::kGreen, Colour::kBlue, Colour::kAlpha};
  constexpr Colour kBlueFirst[] = {Colour::kBlue, Colour::kGreen, Colour::kRed, Colour::kAlpha};
  switch (format.family) {
    case PixelFamily::kMono:
      return Colour::kGrey;
    case PixelFamily::kRGB:
    case PixelFamily::kRGBa:
      return kRedFirst[channel];
    case PixelFamily::kBGR:
    case PixelFamily::kBGRa:
      return kBlueFirst[channel];
    default:
      return MosaicColour(format.family, column, row);
  }
}

Samples ReadSamples(const Image& image) {
  ImageFacts facts = FactsOf(image);
  Image unpacked;
  if (facts.format.layout != PixelLayout::kUnpacked) {
    const NamedFormat format = UnpackedFormat(facts.format.family, facts.format.bits);
    Require(KORVEL_Image_ConvertTo(image.Get(), format.id, KORVEL_CONVERSION_MODE_Fast, unpacked.Out()),
            "unpack " + std::string(facts.format.name), "Check that the file is whole.");
    facts = FactsOf(unpacked);
  }

  Samples samples{.format = facts.format, .width = facts.width, .height = facts.height};
  Require(KORVEL_PixelFormat_GetNumChannels(facts.format.id, &samples.channels), "look up the number of channels",
          "The korvel command and the library are of different versions; install both anew.");
  samples.values.resize(facts.width * facts.height * samples.channels);
  if (facts.format.bits == 8) {
    std::copy_n(facts.bytes, samples.values.size(), samples.values.begin());
  } else {
    std::memcpy(samples.values.data(), facts.bytes, samples.values.size() * sizeof(uint16_t));
  }
  return samples;
}

std::vector<ColourStatistics> Measure(const Samples& samples) {
  struct Sums {
    uint64_t count = 0;
    uint64_t sum = 0;
    uint16_t minimum = 0xFFFF;
    uint16_t maximum = 0;
  };
  std::array<Sums, kColourNames.size()> by_colour;
  auto sample = samples.values.begin();
  for (size_t row = 0; row < samples.height; ++row) {
    for (size_t column = 0; column < samples.width; ++column) {
      for (size_t channel = 0; channel < samples.channels; ++channel) {
        Sums& sums = by_colour[static_cast<size_t>(samples.ColourAt(column, row, channel))];
        const uint16_t value = *sample++;
        ++sums.count;
        sums.sum += value;
        sums.minimum = std::min(sums.minimum, value);
        sums.maximum = std::max(sums.maximum, value);
      }
    }
  }

  std::vector<ColourStatistics> statistics;
  for (size_t colour = 0; colour < by_colour.size(); ++colour) {
    const Sums& sums = by_colour[colour];
    if (sums.count == 0) continue;
    statistics.push_back({.colour = static_cast<Colour>(colour),
                          .count = sums.count,
                          .minimum = sums.minimum,
                          .maximum = sums.maximum,
                          .mean = static_cast<double>(sums.sum) / static_cast<double>(sums.count)});
  }
  return statistics;
}

}  // namespace korvel::tools
