#include "samples.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <string>
#include <utility>

#include "korvel/korvel.h"
#include "library_error.h"
#include "tool_error.h"

namespace korvel::tools {

void Unpack(Image& image) {
  const NamedFormat format = FactsOf(image).format;
  if (format.layout == PixelLayout::kUnpacked) return;
  Image unpacked;
  Require(KORVEL_Image_ConvertTo(image.Get(), UnpackedFormat(format.family, format.bits).id,
                                 KORVEL_CONVERSION_MODE_Fast, unpacked.Out()),
          "unpack " + std::string(format.name), "Check that the file is whole.");
  image = std::move(unpacked);
}

Samples ReadSamples(const Image& image) {
  const ImageFacts facts = FactsOf(image);
  Samples samples{.format = facts.format, .width = facts.width, .height = facts.height};
  Require(KORVEL_PixelFormat_GetNumChannels(facts.format.id, &samples.channels), "look up the number of channels",
          kVersionAdvice);
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
  std::array<Sums, kColourCount> by_colour;
  auto sample = samples.values.begin();
  for (size_t row = 0; row < samples.height; ++row) {
    for (size_t column = 0; column < samples.width; ++column) {
      for (size_t channel = 0; channel < samples.channels; ++channel) {
        Sums& sums = by_colour[static_cast<size_t>(ColourAt(samples.format, column, row, channel))];
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
