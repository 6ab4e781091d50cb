#include "image_facts.h"

#include "korvel/korvel.h"
#include "library_error.h"
#include "tool_error.h"

namespace korvel::tools {

ImageFacts FactsOf(const Image& image) {
  const std::string doing = "look at an image";
  ImageFacts facts;
  uint32_t format = 0;
  Require(KORVEL_Image_GetPixelFormat(image.Get(), &format), doing, kVersionAdvice);
  Require(KORVEL_Image_GetWidth(image.Get(), &facts.width), doing, kVersionAdvice);
  Require(KORVEL_Image_GetHeight(image.Get(), &facts.height), doing, kVersionAdvice);
  Require(KORVEL_Image_GetData(image.Get(), &facts.bytes), doing, kVersionAdvice);
  Require(KORVEL_Image_GetByteCount(image.Get(), &facts.byte_count), doing, kVersionAdvice);
  facts.format = FormatOfId(format);
  return facts;
}

std::string Describe(const ImageFacts& facts) {
  return std::to_string(facts.width) + " x " + std::to_string(facts.height) + ", " + std::string(facts.format.name);
}

}  // namespace korvel::tools
