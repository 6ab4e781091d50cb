#include "figures/picture.h"

#include <algorithm>

#include "figures/figures.h"
#include "image_facts.h"
#include "library_error.h"

namespace korvel::tools {
namespace {

constexpr uint32_t kSmallestPng = 10;

Picture PictureOf(const Image& image, KORVEL_CONVERSION_MODE mode) {
  Image colour;
  Require(KORVEL_Image_ConvertTo(image.Get(), KORVEL_PIXEL_FORMAT_RGB8, mode, colour.Out()), "make colours",
          kBuildAdvice);
  const ImageFacts facts = FactsOf(colour);
  return {facts.width, facts.height, {facts.bytes, facts.bytes + facts.byte_count}};
}

}  // namespace

Picture ColourPicture(const Image& image, KORVEL_CONVERSION_MODE mode) { return PictureOf(image, mode); }

Picture MosaicPicture(const Image& image) {
  const ImageFacts facts = FactsOf(image);
  Image samples;  // the same bytes, taken for grey
  Require(KORVEL_Image_ConstructFromBuffer(UnpackedFormat(PixelFamily::kMono, facts.format.bits).id, facts.bytes,
                                           facts.byte_count, facts.width, facts.height, samples.Out()),
          "take a mosaic for grey", kBuildAdvice);
  return PictureOf(samples, KORVEL_CONVERSION_MODE_Fast);
}

Picture Crop(const Picture& picture, const Detail& detail) {
  Picture crop{detail.width * detail.magnification, detail.height * detail.magnification, {}};
  crop.rgb.reserve(crop.width * crop.height * 3);
  for (size_t y = 0; y < crop.height; ++y) {
    for (size_t x = 0; x < crop.width; ++x) {
      const size_t column = detail.left + x / detail.magnification;
      const size_t row = detail.top + y / detail.magnification;
      const uint8_t* const pixel = &picture.rgb[(row * picture.width + column) * 3];
      crop.rgb.insert(crop.rgb.end(), pixel, pixel + 3);
    }
  }
  return crop;
}

void WritePicture(const Picture& picture, const std::string& path) {
  std::vector<uint8_t> bytes = picture.rgb;
  Image image;
  Require(KORVEL_Image_ConstructFromBuffer(KORVEL_PIXEL_FORMAT_RGB8, bytes.data(), bytes.size(), picture.width,
                                           picture.height, image.Out()),
          "take a picture", kBuildAdvice);
  Require(KORVEL_ImageWriter_WriteAsPNG(image.Get(), kSmallestPng, path.data(), path.size()), "write '" + path + "'",
          "Check the space and the permissions of the output folder.");
}

}  // namespace korvel::tools
