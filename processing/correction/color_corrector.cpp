#include "processing/correction/color_corrector.h"

#include <utility>

namespace img::processing {

ColorCorrector::ColorCorrector(std::shared_ptr<buffer::IfcMultiFormatBufferPool> pool,
                               const ProcessorFeatures& features)
    : pool_(std::move(pool)), optimized_(features) {}

bool ColorCorrector::IsFormatSupported(PixelFormatId format) const {
  if (optimized_.IsFormatSupported(format)) return true;
  const std::optional<FormatFacts> facts = FindFacts(format);
  return facts && facts->type == PixelType::Color && (format == PixelFormatId::RGB10p32 || !facts->IsPacked());
}

void ColorCorrector::SetFactors(const ColorFactors& factors) {
  simple_.SetFactors(factors);
  optimized_.SetFactors(factors);
}

std::shared_ptr<IfcImage> ColorCorrector::Process(const IfcImage& image) {
  if (optimized_.Accepts(image)) {
    std::shared_ptr<IfcImage> output = pool_->AllocBuffer(image.PixelFormat(), image.Area().size)->CreateImage();
    if (optimized_.Process(image, *output)) return output;
  }
  std::shared_ptr<IfcImage> output = image.Clone(*pool_);
  simple_.Process(*output);
  return output;
}

void ColorCorrector::ProcessInPlace(IfcImage& image) {
  if (!optimized_.Process(image, image)) simple_.Process(image);
}

}  // namespace img::processing
