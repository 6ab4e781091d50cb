#include "thumbnail.h"

#include <algorithm>
#include <cmath>
#include <string>
#include <utility>

#include "library_error.h"
#include "tool_error.h"

namespace korvel::tools {
namespace {

// As colour of the same depth where it is a mosaic, and not packed.
Samples ReadPicture(const Image& image, KORVEL_CONVERSION_MODE mode) {
  const NamedFormat format = FactsOf(image).format;
  const PixelFamily family = IsBayer(format) ? PixelFamily::kRGB : format.family;
  const NamedFormat to = UnpackedFormat(family, format.bits);
  if (to.id == format.id) return ReadSamples(image);
  Image picture;
  Require(KORVEL_Image_ConvertTo(image.Get(), to.id, mode, picture.Out()),
          "convert " + std::string(format.name) + " to " + std::string(to.name), "Check that the file is whole.");
  return ReadSamples(picture);
}

// A part of the picture; right and bottom are not in it.
struct Box {
  size_t left;
  size_t right;
  size_t top;
  size_t bottom;
};

std::array<float, 3> MeanOf(const Samples& samples, const Box& box) {
  std::array<uint64_t, kColourCount> sums{};
  for (size_t row = box.top; row < box.bottom; ++row) {
    const uint16_t* sample = samples.values.data() + (row * samples.width + box.left) * samples.channels;
    for (size_t column = box.left; column < box.right; ++column) {
      for (size_t channel = 0; channel < samples.channels; ++channel) {
        sums[static_cast<size_t>(ColourOfChannel(samples.format, channel))] += *sample++;
      }
    }
  }
  const auto pixels = static_cast<double>((box.right - box.left) * (box.bottom - box.top));
  const double scale = 1 / (pixels * ((1U << samples.format.bits) - 1));
  const auto mean = [&](Colour colour) {
    const Colour seen = samples.channels == 1 ? Colour::kGrey : colour;
    return static_cast<float>(std::min(1.0, static_cast<double>(sums[static_cast<size_t>(seen)]) * scale));
  };
  return {mean(Colour::kRed), mean(Colour::kGreen), mean(Colour::kBlue)};
}

}  // namespace

PictureSize FitInto(PictureSize picture, PictureSize box) {
  const double scale = std::min({1.0, static_cast<double>(box.width) / static_cast<double>(picture.width),
                                 static_cast<double>(box.height) / static_cast<double>(picture.height)});
  const auto scaled = [&](size_t side) {
    return std::max<size_t>(1, static_cast<size_t>(std::lround(static_cast<double>(side) * scale)));
  };
  return {scaled(picture.width), scaled(picture.height)};
}

Thumbnail MakeThumbnail(const Image& image, PictureSize size, KORVEL_CONVERSION_MODE mode) {
  const Samples samples = ReadPicture(image, mode);
  Thumbnail thumbnail{.width = size.width, .height = size.height};
  thumbnail.pixels.reserve(size.width * size.height);
  for (size_t row = 0; row < size.height; ++row) {
    const size_t top = row * samples.height / size.height;
    const size_t bottom = (row + 1) * samples.height / size.height;
    for (size_t column = 0; column < size.width; ++column) {
      const size_t left = column * samples.width / size.width;
      const size_t right = (column + 1) * samples.width / size.width;
      thumbnail.pixels.push_back(MeanOf(samples, {left, right, top, bottom}));
    }
  }
  return thumbnail;
}

}  // namespace korvel::tools
